#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/Desktop.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/Observations.h"

namespace tessarune {

/// Keeps the setting `launchAtLogin` and what the desktop starts the same, wherever either was
/// changed. Main queue; host, settings and desktop outlive it.
class LoginItem {
  public:
    /// What the user has switched off in the desktop's own settings is off here too, and what was
    /// entered there while nothing had been chosen here is on; what was switched on here while no
    /// program ran is made so.
    LoginItem(Host& host, AppSettings& settings, Desktop& desktop);
    ~LoginItem() { fallBack_.cancel(); }
    LoginItem(const LoginItem&) = delete;

  private:
    void apply(bool startsWithDesktop);

    Host& host_;
    AppSettings& settings_;
    Desktop& desktop_;
    DelayedCall fallBack_;
    Observations observations_;
};

} // namespace tessarune
