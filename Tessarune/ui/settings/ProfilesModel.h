#pragma once

#include "Tessarune/ui/settings/SettingsWindowEnvironment.h"
#include "TessaruneCore/observation/Observations.h"

#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

namespace tessarune {

/// The profiles, each of which changes a fixed group of settings, and the tuning settings as text.
/// No profile can be applied while a session runs. Main thread; the environment must outlive it.
class ProfilesModel final : public QObject {
    Q_OBJECT
    /// "title" and "about" of each profile.
    Q_PROPERTY(QVariantList profiles READ profiles CONSTANT)
    /// Whether a session runs.
    Q_PROPERTY(bool isLocked READ isLocked NOTIFY changed)
    /// The result of the last action; while a session runs, why no profile can be applied.
    Q_PROPERTY(QString message READ message NOTIFY changed)
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

  public:
    explicit ProfilesModel(const SettingsWindowEnvironment& environment);

    QVariantList profiles() const;
    bool isLocked() const;
    QString message() const;
    QVariantMap texts() const;

    Q_INVOKABLE void apply(int profile);
    /// Restores the defaults of all settings of the advanced pane; does nothing while a session
    /// runs.
    Q_INVOKABLE void restore();
    Q_INVOKABLE void copySnapshot();

  Q_SIGNALS:
    void changed();

  private:
    void tell(std::string_view key);

    const SettingsWindowEnvironment& environment_;
    QString message_;
    Observations observations_;
};

} // namespace tessarune
