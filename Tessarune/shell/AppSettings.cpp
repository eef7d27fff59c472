#include "Tessarune/shell/AppSettings.h"

#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>

namespace tessarune {

namespace {

constexpr std::int64_t commandKey = 0x100000;
constexpr std::int64_t commandAndOptionKeys = 0x180000;
constexpr std::int64_t anyInteger = std::int64_t{1} << 53; // what a JSON number holds exactly

/// A stored id that is no option reads as the default one.
SettingCodec<std::string> recognitionOptionCodec() {
    SettingCodec<std::string> codec = textCodec();
    codec.read = [read = codec.read](const SettingValue& stored) -> std::optional<std::string> {
        const auto id = read(stored);
        return id ? std::optional(ModelCatalog::normalizedRecognitionOptionID(*id)) : std::nullopt;
    };
    codec.parse = [](std::string_view text) -> std::optional<std::string> {
        return ModelCatalog::recognitionOption(text) ? std::optional(std::string(text))
                                                     : std::nullopt;
    };
    codec.expected.clear();
    for (const auto& option : ModelCatalog::recognitionOptions()) {
        codec.expected += (codec.expected.empty() ? "" : ", ") + option.id;
    }
    return codec;
}

/// Whoever said something about it that is not understood may have said no.
SettingCodec<bool> recordingCodec() {
    SettingCodec<bool> codec = boolCodec();
    codec.cautious = false;
    return codec;
}

SettingCodec<DiagnosticsLevel> levelCodec() {
    std::vector<std::pair<DiagnosticsLevel, std::string>> words;
    for (const auto level :
         {DiagnosticsLevel::off, DiagnosticsLevel::core, DiagnosticsLevel::standard,
          DiagnosticsLevel::verbose, DiagnosticsLevel::trace}) {
        words.emplace_back(level, storageName(level));
    }
    return wordCodec(std::move(words));
}

SettingCodec<AppleAnalyzerDiagnosticsMode> analyzerModeCodec() {
    using Mode = AppleAnalyzerDiagnosticsMode;
    return wordCodec<Mode>(
        {{Mode::off, "off"}, {Mode::summary, "summary"}, {Mode::fullRaw, "fullRaw"}});
}

SettingCodec<SubtitleLayoutMode> layoutCodec() {
    return wordCodec<SubtitleLayoutMode>(
        {{SubtitleLayoutMode::lyrics, "lyrics"},
         {SubtitleLayoutMode::bilingualCompare, "bilingualCompare"}});
}

SettingCodec<std::int64_t> modifiersCodec() {
    SettingCodec<std::int64_t> codec = integerCodec(0, 0xFFFFFFFF);
    codec.read = [read = codec.read](const SettingValue& stored) {
        const auto mask = read(stored);
        return mask ? std::optional(AppSettings::normalizeShortcutModifiers(*mask)) : std::nullopt;
    };
    codec.parse = [parse = codec.parse](std::string_view text) {
        const auto mask = parse(text);
        return mask ? std::optional(AppSettings::normalizeShortcutModifiers(*mask)) : std::nullopt;
    };
    return codec;
}

SettingCodec<std::int64_t> percentCodec() {
    return integerCodec(0, 100);
}
SettingCodec<std::int64_t> pointsCodec() {
    return integerCodec(6, 200);
}
SettingCodec<std::int64_t> millisecondsCodec() {
    return integerCodec(0, 3600000);
}

} // namespace

ShortcutSetting AppSettings::shortcut(const char* name, std::int64_t keyCode,
                                      std::int64_t modifiers) {
    return {{store_, all_, std::string(name) + "KeyCode", keyCode, integerCodec(0, 0xFFFF)},
            {store_, all_, std::string(name) + "Modifiers", modifiers, modifiersCodec()}};
}

// A setting enters itself under its own name: the key is the member's name, always.
#define SETTING(member, ...) member(store_, all_, #member, __VA_ARGS__)
#define SHORTCUT(member, keyCode, modifiers) member(shortcut(#member, keyCode, modifiers))

AppSettings::AppSettings(UserDefaults& store)
    : store_(store),
      SETTING(selectedRecognitionOptionID, std::string(ModelCatalog::defaultRecognitionOptionID),
              recognitionOptionCodec()),
      SETTING(speechModel, "automatic", textCodec()),
      SETTING(modelMirror, "", textCodec()),
      SETTING(sentenceSegmentation, true, boolCodec()),
      SETTING(trueFreeze, true, boolCodec()),
      SETTING(clauseLevelSegmentation, true, boolCodec()),
      SETTING(freezeStableSeconds, 0.6, secondsCodec(0, 60)),
      SETTING(duplicateCommitWindowSeconds, 4.0, secondsCodec(-1, 3600)),
      SETTING(softCaptionEnabled, true, boolCodec()),
      SETTING(softCaptionStableSeconds, 0.3, secondsCodec(0, 60)),
      SETTING(appleAnalyzerEarlyFinalize, true, boolCodec()),
      SETTING(appleAnalyzerHistoryRefinement, true, boolCodec()),
      SETTING(translationBackend, "苹果", textCodec()),
      SETTING(translationTargetLanguage, "zh-Hans", textCodec()),
      SETTING(softTranslationEnabled, true, boolCodec()),
      SETTING(translationDrainTimeoutSeconds, 4.0, secondsCodec(0, 600)),
      SETTING(recordWhileCaptioning, true, recordingCodec()),
      SETTING(recordLosslessAudio, false, boolCodec()),
      SETTING(audioInactivityAutoStopMinutes, 10, integerCodec(-anyInteger, anyInteger)),
      SETTING(diagnosticsLevel, DiagnosticsLevel::core, levelCodec()),
      SETTING(sessionDiagnosticsEnabled, false, boolCodec()),
      SETTING(appleAnalyzerDiagnosticsMode, AppleAnalyzerDiagnosticsMode::summary,
              analyzerModeCodec()),
      SETTING(perfSampleIntervalSeconds, 2.0, secondsCodec(0, 3600)),
      SETTING(historyPlaybackDiagnosticsEnabled, false, boolCodec()),
      SETTING(subtitleLayoutMode, SubtitleLayoutMode::bilingualCompare, layoutCodec()),
      SETTING(subtitleLyricsLayout, false, boolCodec()),
      SETTING(swapCaptionOrder, false, boolCodec()),
      SETTING(mergeBilingualRows, false, boolCodec()),
      SETTING(subtitleBottomPadding, 100, integerCodec(0, 10000)),
      SETTING(subtitleReviewAutoReturnSeconds, 30, integerCodec(0, 3600)),
      SETTING(smoothStreaming, true, boolCodec()),
      SETTING(smoothPaceMS, 150, millisecondsCodec()),
      SETTING(highlightChanges, true, boolCodec()),
      SETTING(highlightColorHex, 0x21BB54, colorCodec()),
      SETTING(sourceFontSize, 24, pointsCodec()),
      SETTING(translationFontSize, 20, pointsCodec()),
      SETTING(sourceFontColorHex, 0xF2F2F4, colorCodec()),
      SETTING(translationFontColorHex, 0xF2F2F4, colorCodec()),
      SETTING(bgColorHex, 0, colorCodec()),
      SETTING(bgOpacity, 100, percentCodec()),
      SETTING(keepOnTop, true, boolCodec()),
      SETTING(compactToolbar, false, boolCodec()),
      SETTING(screenCaptureProtected, false, boolCodec()),
      SETTING(showClearSubtitlesInSubtitleToolbar, false, boolCodec()),
      SETTING(showCopyBilingualInSubtitleToolbar, false, boolCodec()),
      SETTING(showCopyOriginalInSubtitleToolbar, false, boolCodec()),
      SETTING(showHistoryInSubtitleToolbar, false, boolCodec()),
      SETTING(showLayoutModeInSubtitleToolbar, false, boolCodec()),
      SETTING(showPinWindowInSubtitleToolbar, true, boolCodec()),
      SETTING(showSettingsInSubtitleToolbar, true, boolCodec()),
      SETTING(showSwapCaptionOrderInSubtitleToolbar, false, boolCodec()),
      SETTING(dockClickTogglesRecord, false, boolCodec()),
      SETTING(launchAtLogin, false, boolCodec()),
      SETTING(showDockIcon, true, boolCodec()),
      SETTING(screenshotEnabled, false, boolCodec()),
      SETTING(screenshotIntervalMs, 1000, millisecondsCodec()),
      SETTING(arenaScreenshotEnabled, false, boolCodec()),
      SETTING(arenaScreenshotIntervalMs, 1000, millisecondsCodec()),
      SHORTCUT(shortcutCopy, 8, commandKey),
      SHORTCUT(shortcutCopyOriginal, 8, commandAndOptionKeys),
      SHORTCUT(shortcutClear, 14, commandKey),
      SHORTCUT(shortcutPin, 35, commandKey),
      SHORTCUT(shortcutHistory, 4, commandKey),
      SHORTCUT(shortcutToggleWindow, 13, commandKey),
      SHORTCUT(shortcutToggleRecord, 49, 0),
      SHORTCUT(shortcutLyricsLayout, 37, commandKey),
      SHORTCUT(shortcutSwapLayout, 15, commandKey) {
    std::sort(all_.begin(), all_.end(),
              [](const auto* a, const auto* b) { return a->key() < b->key(); });
    store_.observe([this] {
        reload();
        changesFromElsewhere = *changesFromElsewhere + 1;
    });
}

AppSettings::~AppSettings() {
    store_.observe({});
}

#undef SETTING
#undef SHORTCUT

AnySetting* AppSettings::find(std::string_view key) const {
    const auto found =
        std::find_if(all_.begin(), all_.end(), [&](const auto* s) { return s->key() == key; });
    return found == all_.end() ? nullptr : *found;
}

void AppSettings::reload() {
    for (auto* setting : all_)
        setting->reload();
}

struct AppSettings::Profile {
    double freezeStableSeconds;
    double translationDrainTimeoutSeconds;
    double duplicateCommitWindowSeconds;
    double perfSampleIntervalSeconds;
    double softCaptionStableSeconds;
    std::optional<std::int64_t> smoothPaceMS;
};

void AppSettings::apply(const Profile& profile) {
    diagnosticsLevel = DiagnosticsLevel::standard;
    subtitleReviewAutoReturnSeconds = 30;
    for (auto* on :
         {&recordWhileCaptioning, &sessionDiagnosticsEnabled, &smoothStreaming,
          &sentenceSegmentation, &trueFreeze, &appleAnalyzerEarlyFinalize,
          &appleAnalyzerHistoryRefinement, &clauseLevelSegmentation, &softCaptionEnabled}) {
        *on = true;
    }
    translationBackend.restore();
    translationTargetLanguage.restore();
    freezeStableSeconds = profile.freezeStableSeconds;
    translationDrainTimeoutSeconds = profile.translationDrainTimeoutSeconds;
    duplicateCommitWindowSeconds = profile.duplicateCommitWindowSeconds;
    perfSampleIntervalSeconds = profile.perfSampleIntervalSeconds;
    softCaptionStableSeconds = profile.softCaptionStableSeconds;
    if (profile.smoothPaceMS)
        smoothPaceMS = *profile.smoothPaceMS;
}

void AppSettings::applyInternalBetaRecommendedDefaults() {
    apply({0.60, 4.0, 4.0, 2.0, 0.30, std::nullopt});
    selectedRecognitionOptionID.restore();
}

void AppSettings::applyLowLatencyProfile() {
    apply({0.35, 2.0, 3.0, 1.0, 0.20, 100});
}
void AppSettings::applyStableTranslationProfile() {
    apply({1.00, 6.0, 5.0, 2.0, 0.45, 150});
}
void AppSettings::applyStressTestProfile() {
    apply({0.60, 4.0, 4.0, 1.0, 0.30, 120});
}

void AppSettings::resetSubtitleDefaults() {
    AnySetting* const ordered[] = {&subtitleLayoutMode,
                                   &swapCaptionOrder,
                                   &subtitleBottomPadding,
                                   &subtitleReviewAutoReturnSeconds,
                                   &showLayoutModeInSubtitleToolbar,
                                   &showSwapCaptionOrderInSubtitleToolbar,
                                   &showCopyBilingualInSubtitleToolbar,
                                   &showCopyOriginalInSubtitleToolbar,
                                   &showClearSubtitlesInSubtitleToolbar,
                                   &showPinWindowInSubtitleToolbar,
                                   &showHistoryInSubtitleToolbar,
                                   &showSettingsInSubtitleToolbar,
                                   &highlightChanges,
                                   &highlightColorHex,
                                   &sourceFontSize,
                                   &translationFontSize,
                                   &sourceFontColorHex,
                                   &translationFontColorHex,
                                   &bgColorHex,
                                   &bgOpacity};
    for (auto* setting : ordered)
        setting->restore();
}

std::int64_t AppSettings::normalizeShortcutModifiers(std::int64_t mask) {
    constexpr std::int64_t shiftKey = 0x20000;
    constexpr std::int64_t controlKey = 0x40000;
    constexpr std::int64_t optionKey = 0x80000;
    return mask & (shiftKey | controlKey | optionKey | commandKey);
}

void AppSettings::resetShortcutDefaults() {
    for (auto* shortcut : {&shortcutCopy, &shortcutCopyOriginal, &shortcutClear, &shortcutPin,
                           &shortcutHistory, &shortcutToggleWindow, &shortcutToggleRecord,
                           &shortcutLyricsLayout, &shortcutSwapLayout}) {
        shortcut->keyCode.restore();
        shortcut->modifiers.restore();
    }
}

std::string AppSettings::currentTuningSummaryText() const {
    std::string text = "Tessarune tuning snapshot\nprofileDefault=内测推荐";
    const auto add = [&](std::string_view name, const std::string& value) {
        text += "\n" + std::string(name) + "=" + value;
    };
    add("translationBackend", *translationBackend);
    add("translationTarget", *translationTargetLanguage);
    add("softTranslationEnabled", softTranslationEnabled.text());
    add("sentenceSegmentation", sentenceSegmentation.text());
    add("freezeStableSeconds", Text::fixed(*freezeStableSeconds, 2));
    add("clauseLevelSegmentation", clauseLevelSegmentation.text());
    add("softCaptionEnabled", softCaptionEnabled.text());
    add("softCaptionStableSeconds", Text::fixed(*softCaptionStableSeconds, 2));
    add("subtitleBottomPadding", subtitleBottomPadding.text());
    add("subtitleReviewAutoReturnSeconds", subtitleReviewAutoReturnSeconds.text());
    add("appleAnalyzerEarlyFinalize", appleAnalyzerEarlyFinalize.text());
    add("appleAnalyzerHistoryRefinement", appleAnalyzerHistoryRefinement.text());
    add("diagnosticsLevel", diagnosticsLevel.text());
    add("appleAnalyzerDiagnosticsMode", appleAnalyzerDiagnosticsMode.text());
    add("translationDrainTimeoutSeconds", Text::fixed(*translationDrainTimeoutSeconds, 1));
    add("duplicateCommitWindowSeconds", Text::fixed(*duplicateCommitWindowSeconds, 1));
    add("smoothStreaming", smoothStreaming.text());
    add("recordWhileCaptioning", recordWhileCaptioning.text());
    add("recordLosslessAudio", recordLosslessAudio.text());
    add("sessionDiagnosticsEnabled", sessionDiagnosticsEnabled.text());
    add("perfSampleIntervalSeconds", Text::fixed(*perfSampleIntervalSeconds, 1));
    return text;
}

SubtitleLayoutMode AppSettings::effectiveSubtitleLayoutMode(bool translationEnabled) const {
    return translationEnabled ? *subtitleLayoutMode : SubtitleLayoutMode::lyrics;
}

void AppSettings::cycleSubtitleLayoutMode(bool translationEnabled) {
    const bool toBilingual =
        *subtitleLayoutMode == SubtitleLayoutMode::lyrics && translationEnabled;
    subtitleLayoutMode =
        toBilingual ? SubtitleLayoutMode::bilingualCompare : SubtitleLayoutMode::lyrics;
}

} // namespace tessarune
