#include "Tessarune/display/LiveCaptionDisplaySettingsObserver.h"

#include <type_traits>
#include <utility>

namespace tessarune {

LiveCaptionDisplaySettingsObserver::LiveCaptionDisplaySettingsObserver(AppSettings& settings,
                                                                       Handler handler)
    : handler_(std::move(handler)) {
    observe(settings.subtitleLayoutMode);
    observe(settings.swapCaptionOrder);
    observe(settings.translationBackend);
    observe(settings.translationTargetLanguage);
    observe(settings.smoothStreaming);
    observe(settings.smoothPaceMS);
    observe(settings.sourceFontSize);
    observe(settings.translationFontSize);
    observe(settings.bgOpacity);
    observe(settings.highlightChanges);
    observe(settings.softCaptionEnabled);
    observe(settings.softCaptionStableSeconds);
}

/// Ignores assignments of the current value.
template <typename T>
void LiveCaptionDisplaySettingsObserver::observe(Setting<T>& setting) {
    const auto valueOf = [&setting] {
        if constexpr (std::is_same_v<T, std::string>)
            return *setting; // `text()` may spell the value differently, for the user
        else
            return setting.text();
    };
    observations_.add(setting.onChange([this, &setting, valueOf, last = valueOf()]() mutable {
        if (std::string value = valueOf(); value != std::exchange(last, value))
            handler_(std::string(setting.key()), value);
    }));
}

} // namespace tessarune
