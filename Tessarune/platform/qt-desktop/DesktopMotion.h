#pragma once

#include "TessaruneCore/observation/Published.h"

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <functional>
#include <set>
#include <string>

namespace tessarune {

/// Whether the user has asked the desktop for less motion, as the desktop's settings portal reports
/// it. False without a portal. On the main thread, while the application object exists.
class DesktopMotion : public QObject {
    Q_OBJECT

  public:
    /// `bus` is the session bus.
    explicit DesktopMotion(QDBusConnection bus = QDBusConnection::sessionBus());

    /// Assigned only by this class.
    Published<bool> isReduced{false};

  private Q_SLOTS:
    void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

  private:
    void read(const char* group, const char* key);
    void apply(const QString& group, const QString& key, const QDBusVariant& value);

    QDBusConnection bus_;
    std::set<std::string, std::less<>> changed_;  // keys that a signal has set
    std::set<std::string, std::less<>> reducing_; // keys whose value means reduced motion
};

} // namespace tessarune
