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

/// Assigning the current value is not a change: reading the file again assigns all settings.
template <typename T>
void LiveCaptionDisplaySettingsObserver::observe(Setting<T>& setting) {
    const auto valueOf = [&setting] {
        // If the command line spells a value differently, the stored value is compared.
        if constexpr (std::is_same_v<T, std::string>)
            return *setting;
        else
            return setting.text();
    };
    observations_.add(setting.onChange([this, &setting, valueOf, last = valueOf()]() mutable {
        if (std::string value = valueOf(); value != std::exchange(last, value))
            handler_(std::string(setting.key()), value);
    }));
}

} // namespace tessarune
