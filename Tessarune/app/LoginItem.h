#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/Desktop.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/Observations.h"

namespace tessarune {

/// Keeps the setting `launchAtLogin` and the desktop's login item equal. A change of the setting
/// takes effect at once, a change in the desktop's own settings at the next start of the program.
/// Main queue; host, settings and desktop must outlive it.
class LoginItem {
  public:
    /// Compares the setting with the login item. A login item that the user switched off in the
    /// desktop's own settings switches the setting off. A login item without a stored setting
    /// switches the setting on. In all other cases the login item gets the setting's value, unless
    /// the setting is unreadable.
    LoginItem(Host& host, AppSettings& settings, Desktop& desktop);
    ~LoginItem() { revert_.cancel(); }
    LoginItem(const LoginItem&) = delete;

  private:
    void apply(bool startsWithDesktop);

    Host& host_;
    AppSettings& settings_;
    Desktop& desktop_;
    DelayedCall revert_; ///< sets the setting back after the desktop refused the change
    Observations observations_;
};

} // namespace tessarune
