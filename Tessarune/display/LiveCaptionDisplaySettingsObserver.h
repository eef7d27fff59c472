#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/observation/Observations.h"

#include <functional>
#include <string>

namespace tessarune {

/// Reports changes of settings that affect how captions look. Only the diagnostics run needs these
/// reports; views read the settings themselves. Main queue; the settings must outlive it.
class LiveCaptionDisplaySettingsObserver {
  public:
    /// The setting's key, and its new value as in the settings file.
    using Handler = std::function<void(const std::string& name, const std::string& value)>;

    LiveCaptionDisplaySettingsObserver(AppSettings& settings, Handler handler);
    LiveCaptionDisplaySettingsObserver(const LiveCaptionDisplaySettingsObserver&) = delete;

  private:
    template <typename T>
    void observe(Setting<T>& setting);

    const Handler handler_;
    Observations observations_;
};

} // namespace tessarune
