#include "Tessarune/platform/qt-desktop/TrayWatch.h"

#include "Tessarune/platform/qt-desktop/X11Desktop.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <utility>

namespace tessarune {

namespace {

const QString trayService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString trayPath = QStringLiteral("/StatusNotifierWatcher");

} // namespace

TrayWatch::TrayWatch(QDBusConnection bus, std::function<void()> onTray)
    : bus_(std::move(bus)),
      onTray_(std::move(onTray)),
      services_(trayService, bus_, QDBusServiceWatcher::WatchForOwnerChange) {
    qApp->installNativeEventFilter(this);
    if (!bus_.isConnected())
        return;
    connect(&services_, &QDBusServiceWatcher::serviceRegistered, this, &TrayWatch::ask);
    connect(&services_, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        isThere_ = false;
        ++epoch_;
    });
    // The service may appear before any panel displays its items.
    bus_.connect(trayService, trayPath, trayService, QStringLiteral("StatusNotifierHostRegistered"),
                 this, SLOT(ask()));
    ask();
}

TrayWatch::~TrayWatch() {
    if (qApp)
        qApp->removeNativeEventFilter(this);
}

/// Only observes the message. Calls `onTray_` later, because Qt must process the message before the
/// item is created.
bool TrayWatch::nativeEventFilter(const QByteArray& kind, void* message, qintptr* /*result*/) {
    if (X11Desktop::announcesTray(kind, message))
        QMetaObject::invokeMethod(this, onTray_, Qt::QueuedConnection);
    return false;
}

void TrayWatch::ask() {
    QDBusMessage call = QDBusMessage::createMethodCall(
        trayService, trayPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    call << trayService << QStringLiteral("IsStatusNotifierHostRegistered");
    call.setAutoStartService(false);
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, epoch = epoch_] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        watcher->deleteLater();
        if (epoch != epoch_)
            return; // the answer of a service that has ended meanwhile
        isThere_ = !reply.isError() && reply.value().variant().toBool();
        if (isThere_)
            onTray_();
    });
}

} // namespace tessarune
