#include "Tessarune/platform/qt-desktop/SingleInstance.h"

#include <QDeadlineTimer>
#include <QThread>
#include <QUrl>
#include <utility>

namespace tessarune {

namespace {

constexpr int answerTimeoutMS = 5000;
/// How long to wait until the other program has ended; it saves first.
constexpr int maximumEndMS = 15000;
constexpr unsigned long retryPauseMS = 100;
const QString endingError = QStringLiteral("app.tessarune.captions.Error.Ending");

/// The object path of an application id, with slashes for its dots.
QString objectPath(const QString& id) {
    return QLatin1Char('/') + QString(id).replace(QLatin1Char('.'), QLatin1Char('/'));
}

/// The data of this start that allow the running program's window to take the focus.
QVariantMap activation() {
    QVariantMap data;
    for (const auto& [variable, key] : {std::pair("XDG_ACTIVATION_TOKEN", "activation-token"),
                                        std::pair("DESKTOP_STARTUP_ID", "desktop-startup-id")}) {
        if (const QString value = qEnvironmentVariable(variable); !value.isEmpty())
            data.insert(QLatin1String(key), value);
    }
    return data;
}

/// Stores the token where Qt reads it when it activates a window.
void takeActivation(const QVariantMap& data) {
    if (const auto token = data.constFind(QStringLiteral("activation-token")); token != data.end())
        qputenv("XDG_ACTIVATION_TOKEN", token->toByteArray());
}

} // namespace

SingleInstance::SingleInstance(const std::string& applicationID, QDBusConnection bus)
    : id_(QString::fromStdString(applicationID)), bus_(std::move(bus)) {
    if (!bus_.isConnected())
        return;
    // Before the name is registered: a program that finds the name may call at once.
    new ApplicationInterface(*this); // this object is the parent, which deletes it
    bus_.registerObject(objectPath(id_), this);
    standing_ = bus_.registerService(id_) ? Standing::first : Standing::second;
}

SingleInstance::~SingleInstance() {
    if (standing_ == Standing::first)
        bus_.unregisterService(id_);
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

QDBusMessage SingleInstance::ask(InstanceRequest& request) {
    const auto call = [this](const char* method, const QVariantList& arguments) {
        QDBusMessage message = QDBusMessage::createMethodCall(
            id_, objectPath(id_), QStringLiteral("org.freedesktop.Application"),
            QLatin1String(method));
        message.setArguments(arguments + QVariantList{activation()});
        return bus_.call(message, QDBus::Block, answerTimeoutMS);
    };
    if (request.actions.empty() && request.files.empty())
        return call("Activate", {});
    QDBusMessage answer;
    while (!request.actions.empty()) {
        answer = call("ActivateAction",
                      {QString::fromStdString(request.actions.front()), QVariantList()});
        if (answer.type() == QDBusMessage::ErrorMessage)
            return answer;
        request.actions.erase(request.actions.begin());
    }
    QStringList uris;
    for (const std::string& file : request.files)
        uris << QUrl::fromLocalFile(QString::fromStdString(file)).toString(QUrl::FullyEncoded);
    return uris.isEmpty() ? answer : call("Open", {uris});
}

std::string SingleInstance::forward(InstanceRequest& request) {
    QDeadlineTimer deadline(maximumEndMS);
    for (;;) {
        const QDBusMessage answer = ask(request);
        if (answer.type() != QDBusMessage::ErrorMessage)
            return {};
        if (bus_.registerService(id_)) {
            standing_ = Standing::first;
            return {};
        }
        if (answer.errorName() != endingError || deadline.hasExpired())
            return answer.errorMessage().toStdString();
        QThread::msleep(retryPauseMS);
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
        // A decoded address can contain a zero byte, a file name cannot.
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
