#include "Tessarune/display/SubtitleSettingsStores.h"

#include "TessaruneCore/translation/TranslationSupport.h"

#include <utility>

namespace tessarune {

namespace {

bool isTranslationEnabled(const AppSettings& settings) {
    return !TranslationSupport::isDisabledBackend(*settings.translationBackend);
}

} // namespace

SubtitleCaptionSettingsViewState SubtitleCaptionSettingsViewState::of(const AppSettings& settings) {
    const bool enabled = isTranslationEnabled(settings);
    return {.translationEnabled = enabled,
            .subtitleLayoutMode = settings.effectiveSubtitleLayoutMode(enabled),
            .swapCaptionOrder = *settings.swapCaptionOrder,
            .mergeBilingualRows = *settings.mergeBilingualRows,
            .subtitleBottomPadding = *settings.subtitleBottomPadding,
            .subtitleReviewAutoReturnSeconds = *settings.subtitleReviewAutoReturnSeconds,
            .smoothStreaming = *settings.smoothStreaming,
            .smoothPaceMS = *settings.smoothPaceMS,
            .highlightChanges = *settings.highlightChanges,
            .highlightColorHex = *settings.highlightColorHex,
            .sourceFontSize = *settings.sourceFontSize,
            .translationFontSize = *settings.translationFontSize,
            .sourceFontColorHex = *settings.sourceFontColorHex,
            .translationFontColorHex = *settings.translationFontColorHex};
}

SubtitleToolbarSettingsViewState SubtitleToolbarSettingsViewState::of(const AppSettings& settings) {
    return {.translationBackend = *settings.translationBackend,
            .translationTargetLanguage = *settings.translationTargetLanguage,
            .compactToolbar = *settings.compactToolbar,
            .showLayoutMode = *settings.showLayoutModeInSubtitleToolbar,
            .showSwapCaptionOrder = *settings.showSwapCaptionOrderInSubtitleToolbar,
            .showCopyBilingual = *settings.showCopyBilingualInSubtitleToolbar,
            .showCopyOriginal = *settings.showCopyOriginalInSubtitleToolbar,
            .showClearSubtitles = *settings.showClearSubtitlesInSubtitleToolbar,
            .showPinWindow = *settings.showPinWindowInSubtitleToolbar,
            .showHistory = *settings.showHistoryInSubtitleToolbar,
            .showSettings = *settings.showSettingsInSubtitleToolbar,
            .subtitleLayoutMode =
                settings.effectiveSubtitleLayoutMode(isTranslationEnabled(settings)),
            .swapCaptionOrder = *settings.swapCaptionOrder,
            .keepOnTop = *settings.keepOnTop};
}

SubtitleWindowSettingsViewState SubtitleWindowSettingsViewState::of(const AppSettings& settings) {
    return {.keepOnTop = *settings.keepOnTop,
            .bgColorHex = *settings.bgColorHex,
            .bgOpacity = *settings.bgOpacity};
}

template <typename ViewState>
SubtitleSettingsStore<ViewState>::SubtitleSettingsStore(Host& host, AppSettings& settings)
    : state(ViewState::of(settings)), host_(host), settings_(settings) {
    // Observes all settings, because a list of the settings that `ViewState::of` reads could become
    // incomplete.
    for (AnySetting* setting : settings.all())
        observations_.add(setting->onChange([this] { scheduleRefresh(); }));
}

template <typename ViewState>
void SubtitleSettingsStore<ViewState>::scheduleRefresh() {
    if (std::exchange(refreshScheduled_, true))
        return;
    refresh_ = host_.after(0, [this] {
        refreshScheduled_ = false;
        ViewState current = ViewState::of(settings_);
        if (!(current == *state))
            state = std::move(current);
    });
}

template class SubtitleSettingsStore<SubtitleCaptionSettingsViewState>;
template class SubtitleSettingsStore<SubtitleToolbarSettingsViewState>;
template class SubtitleSettingsStore<SubtitleWindowSettingsViewState>;

} // namespace tessarune
