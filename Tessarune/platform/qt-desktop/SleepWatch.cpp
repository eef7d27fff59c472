#include "Tessarune/platform/qt-desktop/SleepWatch.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <utility>

namespace tessarune {

namespace {

const QString loginService = QStringLiteral("org.freedesktop.login1");
const QString managerPath = QStringLiteral("/org/freedesktop/login1");
const QString managerInterface = QStringLiteral("org.freedesktop.login1.Manager");

} // namespace

SleepWatch::SleepWatch(QDBusConnection bus, Handlers handlers)
    : bus_(std::move(bus)), handlers_(std::move(handlers)) {
    if (!bus_.isConnected())
        return;
    bus_.connect(loginService, managerPath, managerInterface, QStringLiteral("PrepareForSleep"),
                 this, SLOT(PrepareForSleep(bool)));
    bus_.connect(loginService, managerPath, managerInterface, QStringLiteral("PrepareForShutdown"),
                 this, SLOT(PrepareForShutdown(bool)));
    inhibit();
}

void SleepWatch::inhibit() {
    QDBusMessage call = QDBusMessage::createMethodCall(loginService, managerPath, managerInterface,
                                                       QStringLiteral("Inhibit"));
    call << QStringLiteral("sleep:shutdown") << QStringLiteral("Tessarune")
         << QStringLiteral("Saves what is being recorded") << QStringLiteral("delay");
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *watcher;
        watcher->deleteLater();
        if (reply.isError()) {
            TessaruneLog::app.info([&reply] {
                return "sleep cannot be delayed: " + reply.error().message().toStdString();
            });
            return;
        }
        inhibitor_ = reply.value();
    });
}

/// A late `ready` for an earlier announcement must not end the delay of the current one.
void SleepWatch::release(unsigned announcement) {
    if (announcement == announcement_)
        inhibitor_ = {};
}

void SleepWatch::PrepareForSleep(bool begins) {
    const unsigned announcement = ++announcement_;
    if (begins) {
        handlers_.willSleep([this, announcement] { release(announcement); });
        return;
    }
    handlers_.didWake();
    inhibit();
}

void SleepWatch::PrepareForShutdown(bool begins) {
    const unsigned announcement = ++announcement_;
    if (begins)
        handlers_.willShutDown([this, announcement] { release(announcement); });
}

} // namespace tessarune
