#include "Tessarune/platform/qt-desktop/DesktopMotion.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <utility>

namespace tessarune {

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");

/// The keys under which desktops store the preference, and the values that mean reduced motion.
constexpr struct {
    const char* group;
    const char* key;
    double reduced;
} preferences[] = {{"org.freedesktop.appearance", "reduced-motion", 1},
                   {"org.gnome.desktop.interface", "enable-animations", 0},
                   {"org.kde.kdeglobals.KDE", "AnimationDurationFactor", 0}};

/// The portal's method `Read` wraps each value in an additional variant.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

DesktopMotion::DesktopMotion(QDBusConnection bus) : bus_(std::move(bus)) {
    if (!bus_.isConnected())
        return;
    qRegisterMetaType<QDBusVariant>(); // otherwise the slot is not found by its signature
    bus_.connect(portalService, portalPath, settingsInterface, QStringLiteral("SettingChanged"),
                 this, SLOT(SettingChanged(QString, QString, QDBusVariant)));
    for (const auto& preference : preferences)
        read(preference.group, preference.key);
}

void DesktopMotion::read(const char* group, const char* key) {
    QDBusMessage call = QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface,
                                                       QStringLiteral("Read"));
    call << QString::fromLatin1(group) << QString::fromLatin1(key);
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, group, key] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        watcher->deleteLater();
        // The reply is an error if the desktop does not have this key; most have only one of the
        // keys. If the key's change was signalled after the call, the signal had the newer value.
        if (!reply.isError() && !changed_.contains(key))
            apply(QString::fromLatin1(group), QString::fromLatin1(key), reply.value());
    });
}

void DesktopMotion::SettingChanged(const QString& group, const QString& key,
                                   const QDBusVariant& value) {
    changed_.insert(key.toStdString());
    apply(group, key, value);
}

void DesktopMotion::apply(const QString& group, const QString& key, const QDBusVariant& value) {
    for (const auto& preference : preferences) {
        if (group != QLatin1String(preference.group) || key != QLatin1String(preference.key))
            continue;
        if (unwrapped(value.variant()).toDouble() == preference.reduced)
            reducing_.insert(preference.key);
        else
            reducing_.erase(preference.key);
        // A desktop may report several keys. The user's wish may be stored under only one of them.
        if (reducing_.empty() == *isReduced)
            isReduced = !reducing_.empty();
    }
}

} // namespace tessarune
