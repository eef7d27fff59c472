#pragma once

#include "TessaruneCore/observation/Published.h"

#include <QDBusVariant>
#include <QObject>
#include <QString>

namespace tessarune {

/// Whether the user has asked the desktop for less motion, through the desktop's settings portal.
/// Without one nothing is asked for. Main thread, with the application object.
class DesktopMotion : public QObject {
    Q_OBJECT

  public:
    DesktopMotion();

    /// Assigned here alone.
    Published<bool> isReduced{false};

  private Q_SLOTS:
    void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

  private:
    void read(const char* group, const char* key);
};

} // namespace tessarune
