#include "Tessarune/platform/qt-desktop/XDGDesktop.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>
#include <string_view>
#include <system_error>
#include <utility>

namespace tessarune {

namespace {

std::filesystem::path autostartFolder() {
    return std::filesystem::path(
               QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
                   .toStdString()) /
           "autostart";
}

/// Quotes a path as an argument of a desktop entry's command. In a command, a backslash escapes the
/// next character; in a desktop entry, each backslash is doubled.
std::string quoted(const std::string& path) {
    std::string text = "\"";
    for (const char character : path) {
        if (character == '\\')
            text += "\\\\\\";
        else if (std::string_view("\"`$").find(character) != std::string_view::npos)
            text += "\\\\";
        else if (character == '%')
            text += '%';
        text += character;
    }
    return text + "\"";
}

/// A program with sound settings. `desktop` is a name as in XDG_CURRENT_DESKTOP; null for a program
/// that fits any desktop.
struct SoundSettings {
    const char* desktop;
    const char* program;
    const char* page;
};
constexpr SoundSettings soundSettings[] = {
    {"GNOME", "gnome-control-center", "sound"}, // refuses to run on other desktops
    {"KDE", "systemsettings", "kcm_pulseaudio"},
    {"KDE", "systemsettings5", "kcm_pulseaudio"},
    {"X-Cinnamon", "cinnamon-settings", "sound"},
    {"MATE", "mate-volume-control", nullptr},
    {nullptr, "pavucontrol", nullptr},
    {nullptr, "pavucontrol-qt", nullptr},
};

/// The first program in the list that fits this desktop and is installed; null if there is none.
const SoundSettings* installedSoundSettings() {
    const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(':');
    for (const SoundSettings& settings : soundSettings) {
        if ((!settings.desktop || desktops.contains(QLatin1String(settings.desktop))) &&
            !QStandardPaths::findExecutable(QLatin1String(settings.program)).isEmpty())
            return &settings;
    }
    return nullptr;
}

} // namespace

XDGDesktop::XDGDesktop(FileSystem& files, std::string applicationID, std::filesystem::path program,
                       QDBusConnection bus)
    : files_(files),
      applicationID_(std::move(applicationID)),
      program_(std::move(program)),
      entryFile_(autostartFolder() / (applicationID_ + ".desktop")),
      bus_(std::move(bus)) {}

XDGDesktop::~XDGDesktop() {
    // The answer to one call may start the next.
    while (auto* const call = calls_.findChild<QDBusPendingCallWatcher*>()) {
        call->waitForFinished();
        delete call;
    }
}

bool XDGDesktop::openURL(const std::string& url) {
    return QDesktopServices::openUrl(QUrl::fromUserInput(QString::fromStdString(url)));
}

bool XDGDesktop::hasSoundSettings() const {
    return installedSoundSettings() != nullptr;
}

bool XDGDesktop::openSoundSettings() {
    const SoundSettings* const settings = installedSoundSettings();
    if (!settings)
        return false;
    QStringList arguments;
    if (settings->page)
        arguments << QLatin1String(settings->page);
    return QProcess::startDetached(QLatin1String(settings->program), arguments);
}

std::string XDGDesktop::entry() const {
    return "[Desktop Entry]\nType=Application\nName=Tessarune\nExec=" + quoted(program_.string()) +
           "\nIcon=" + applicationID_ + "\nTerminal=false\n";
}

void XDGDesktop::setLoginItem(bool startsWithDesktop) {
    if (!startsWithDesktop) {
        files_.remove(entryFile_);
        return;
    }
    files_.createDirectories(entryFile_.parent_path());
    files_.writeAtomically(entryFile_, entry());
}

Desktop::LoginState XDGDesktop::loginState() {
    try {
        const std::string text = files_.read(entryFile_);
        const bool isSwitchedOff =
            text.find("\nHidden=true") != std::string::npos ||
            text.find("\nX-GNOME-Autostart-enabled=false") != std::string::npos;
        return isSwitchedOff ? LoginState::switchedOff : LoginState::on;
    } catch (const std::system_error&) {
        return LoginState::off;
    }
}

void XDGDesktop::notify(const std::string& title, const std::string& text) {
    const QString service = QStringLiteral("org.freedesktop.Notifications");
    const auto method = [&](const char* name) {
        return QDBusMessage::createMethodCall(service,
                                              QStringLiteral("/org/freedesktop/Notifications"),
                                              service, QLatin1String(name));
    };
    constexpr unsigned replacesNone = 0;
    constexpr int desktopDecides = -1; // how long the notification is shown
    const QString id = QString::fromStdString(applicationID_);
    QVariantList arguments{QStringLiteral("Tessarune"),
                           replacesNone,
                           id,
                           QString::fromStdString(title),
                           QString::fromStdString(text),
                           QStringList(),
                           QVariantMap{{QStringLiteral("desktop-entry"), id}},
                           desktopDecides};
    // Most servers read the text as markup, others show it as it is. The server is asked before
    // each notification, because a desktop may start another server.
    constexpr int patience = 1000; // ms
    auto* const asking =
        new QDBusPendingCallWatcher(bus_.asyncCall(method("GetCapabilities"), patience), &calls_);
    QObject::connect(asking, &QDBusPendingCallWatcher::finished, &calls_,
                     [this, asking, arguments, call = method("Notify")]() mutable {
                         const QDBusPendingReply<QStringList> reply = *asking;
                         constexpr int body = 4;
                         if (reply.isError() ||
                             reply.value().contains(QLatin1String("body-markup")))
                             arguments[body] = arguments[body].toString().toHtmlEscaped();
                         call.setArguments(arguments);
                         auto* const sending =
                             new QDBusPendingCallWatcher(bus_.asyncCall(call, patience), &calls_);
                         QObject::connect(sending, &QDBusPendingCallWatcher::finished, sending,
                                          &QObject::deleteLater);
                         asking->deleteLater();
                     });
}

} // namespace tessarune
