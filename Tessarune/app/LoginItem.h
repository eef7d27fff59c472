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
    /// Compares the two. A login item that the user switched off in the desktop's own settings
    /// switches the setting off. A login item without a stored setting switches the setting on.
    /// Otherwise the desktop gets the setting's value, unless that is unreadable.
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
