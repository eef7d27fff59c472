#include "Tessarune/platform/qt-desktop/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDeadlineTimer>
#include <QThread>
#include <QUrl>
#include <utility>

namespace tessarune {

namespace {

constexpr int answerMS = 5000;
/// How long to wait for a program that is ending, which saves first.
constexpr int longestEndMS = 15000;
constexpr unsigned long askAgainMS = 100;
const QString endingError = QStringLiteral("app.tessarune.captions.Error.Ending");

/// The id as a path: its dots are slashes.
QString objectPath(const QString& id) {
    return QLatin1Char('/') + QString(id).replace(QLatin1Char('.'), QLatin1Char('/'));
}

/// Lets the window come to the front although another program has the focus.
QVariantMap activation() {
    QVariantMap data;
    for (const auto& [variable, key] : {std::pair("XDG_ACTIVATION_TOKEN", "activation-token"),
                                        std::pair("DESKTOP_STARTUP_ID", "desktop-startup-id")}) {
        if (const QString value = qEnvironmentVariable(variable); !value.isEmpty())
            data.insert(QLatin1String(key), value);
    }
    return data;
}

/// Where Qt reads the token when a window is activated.
void takeActivation(const QVariantMap& data) {
    if (const auto token = data.constFind(QStringLiteral("activation-token")); token != data.end())
        qputenv("XDG_ACTIVATION_TOKEN", token->toByteArray());
}

} // namespace

SingleInstance::SingleInstance(const std::string& applicationID)
    : id_(QString::fromStdString(applicationID)) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    // Before the name is taken: a program that finds the name may call at once.
    new ApplicationInterface(*this); // Qt's child
    bus.registerObject(objectPath(id_), this);
    standing_ = bus.registerService(id_) ? Standing::first : Standing::second;
}

SingleInstance::~SingleInstance() {
    if (standing_ == Standing::first)
        QDBusConnection::sessionBus().unregisterService(id_);
}

void SingleInstance::serve(std::function<void(const InstanceRequest&)> handler) {
    handler_ = std::move(handler);
    for (const InstanceRequest& request : std::exchange(early_, {}))
        handler_(request);
}

void SingleInstance::receive(InstanceRequest request) {
    if (isEnding_ && calledFromDBus()) {
        sendErrorReply(endingError, QStringLiteral("the program is ending"));
        return;
    }
    if (handler_)
        handler_(request);
    else
        early_.push_back(std::move(request));
}

QDBusMessage SingleInstance::ask(const InstanceRequest& request) const {
    const auto call = [this](const char* method, const QVariantList& arguments) {
        QDBusMessage message = QDBusMessage::createMethodCall(
            id_, objectPath(id_), QStringLiteral("org.freedesktop.Application"),
            QLatin1String(method));
        message.setArguments(arguments + QVariantList{activation()});
        return QDBusConnection::sessionBus().call(message, QDBus::Block, answerMS);
    };
    if (request.actions.empty() && request.files.empty())
        return call("Activate", {});
    QDBusMessage answer;
    for (const std::string& action : request.actions) {
        if (answer.type() != QDBusMessage::ErrorMessage)
            answer = call("ActivateAction", {QString::fromStdString(action), QVariantList()});
    }
    QStringList uris;
    for (const std::string& file : request.files)
        uris << QUrl::fromLocalFile(QString::fromStdString(file)).toString(QUrl::FullyEncoded);
    if (answer.type() != QDBusMessage::ErrorMessage && !uris.isEmpty())
        answer = call("Open", {uris});
    return answer;
}

std::string SingleInstance::forward(const InstanceRequest& request) {
    QDeadlineTimer patience(longestEndMS);
    for (;;) {
        const QDBusMessage answer = ask(request);
        if (answer.type() != QDBusMessage::ErrorMessage)
            return {};
        if (QDBusConnection::sessionBus().registerService(id_)) {
            standing_ = Standing::first;
            return {};
        }
        if (answer.errorName() != endingError || patience.hasExpired())
            return answer.errorMessage().toStdString();
        QThread::msleep(askAgainMS);
    }
}

ApplicationInterface::ApplicationInterface(SingleInstance& instance)
    : QDBusAbstractAdaptor(&instance), instance_(instance) {}

void ApplicationInterface::Activate(const QVariantMap& platformData) {
    takeActivation(platformData);
    instance_.receive({});
}

void ApplicationInterface::Open(const QStringList& uris, const QVariantMap& platformData) {
    takeActivation(platformData);
    InstanceRequest request;
    for (const QString& uri : uris) {
        const QUrl url(uri);
        // A name cannot hold a zero byte, with which an address may begin another one.
        const QString file = url.toLocalFile();
        request.files.push_back(url.isLocalFile() && !file.contains(QChar::Null)
                                    ? file.toStdString()
                                    : uri.toStdString());
    }
    instance_.receive(std::move(request));
}

void ApplicationInterface::ActivateAction(const QString& name, const QVariantList&,
                                          const QVariantMap& platformData) {
    takeActivation(platformData);
    instance_.receive({{name.toStdString()}, {}});
}

} // namespace tessarune
