#include "Tessarune/shell/AppSettings.h"

#include "Tessarune/shell/SettingCodecs.h"
#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslationSupport.h"

namespace tessarune {

namespace {

// Bits of a stored modifier mask.
constexpr std::int64_t commandKey = 0x100000;
constexpr std::int64_t commandAndOptionKeys = 0x180000;

} // namespace

ShortcutSetting AppSettings::shortcut(const char* name, std::string_view about,
                                      std::int64_t keyCode, std::int64_t modifiers) {
    const SettingInfo keyInfo{SettingGroup::shortcuts, about,
                              localizationKey("This is the code of the key (65535: none); the "
                                              "settings window shows and changes the key.")};
    const SettingInfo modifiersInfo{
        SettingGroup::shortcuts, about,
        localizationKey("This is the sum of the shortcut's modifiers: 131072 (Shift), 262144 "
                        "(Super), 524288 (Alt), 1048576 (Ctrl).")};
    return {
        {store_, all_, std::string(name) + "KeyCode", keyInfo, keyCode, integerCodec(0, 0xFFFF)},
        {store_, all_, std::string(name) + "Modifiers", modifiersInfo, modifiers,
         modifiersCodec()}};
}

SettingCodec<std::string> AppSettings::speechModelCodec() {
    SettingCodec<std::string> codec = textCodec();
    codec.choices = [this] {
        return speechModelNames ? speechModelNames() : std::vector<std::string>();
    };
    codec.parse = [this](std::string_view text) -> std::optional<std::string> {
        if (!speechModelNames)
            return std::string(text);
        for (const auto& name : speechModelNames()) {
            if (Text::lowercased(name) == Text::lowercased(text))
                return name;
        }
        return std::nullopt;
    };
    return codec;
}

// Makes the member's name the key, so that the two never differ.
#define SETTING(member, group, about, ...)                                                         \
    member(store_, all_, #member, {SettingGroup::group, about}, __VA_ARGS__)
#define SHORTCUT(member, about, keyCode, modifiers)                                                \
    member(shortcut(#member, about, keyCode, modifiers))

AppSettings::AppSettings(UserDefaults& store)
    : store_(store),
      SETTING(selectedRecognitionOptionID, recognition,
              localizationKey("The variety of English that is spoken."),
              std::string(ModelCatalog::defaultRecognitionOptionID), recognitionOptionCodec()),
      SETTING(speechModel, recognition,
              localizationKey("The model that recognises speech; automatic picks the best one that "
                              "is fast enough on this computer."),
              "automatic", speechModelCodec()),
      SETTING(modelMirror, recognition,
              localizationKey("The address of a server to download models from, instead of their "
                              "publishers' servers."),
              "", mirrorCodec()),
      SETTING(sentenceSegmentation, recognition, localizationKey("Splits captions into sentences."),
              true, boolCodec()),
      SETTING(trueFreeze, recognition,
              localizationKey("Makes a sentence final once it no longer changes, without waiting "
                              "for the recogniser."),
              true, boolCodec()),
      SETTING(clauseLevelSegmentation, recognition,
              localizationKey("Shows finished clauses of a sentence that is still being spoken."),
              true, boolCodec()),
      SETTING(freezeStableSeconds, recognition,
              localizationKey("How long a sentence must stay unchanged before it becomes final."),
              0.6, secondsCodec(0, 60)),
      SETTING(duplicateCommitWindowSeconds, recognition,
              localizationKey("A sentence that is repeated within this many seconds is left out."),
              4.0, secondsCodec(-1, 3600)),
      SETTING(
          softCaptionEnabled, recognition,
          localizationKey("Shows stable clauses and text that may still change in separate rows."),
          true, boolCodec()),
      SETTING(
          softCaptionStableSeconds, recognition,
          localizationKey("How long a clause must stay unchanged before it is shown separately."),
          0.3, secondsCodec(0, 60)),
      SETTING(
          appleAnalyzerEarlyFinalize, recognition,
          localizationKey("Asks the recogniser to end a line as soon as a sentence is complete."),
          true, boolCodec()),
      SETTING(appleAnalyzerHistoryRefinement, recording,
              localizationKey(
                  "Transcribes each recording again after the session, for a better transcript."),
              true, boolCodec()),
      SETTING(translationBackend, translation,
              localizationKey("What translates: the translator on this computer, or none."),
              std::string(TranslationSupport::appleBackendName), backendCodec()),
      SETTING(translationTargetLanguage, translation,
              localizationKey("The language to translate into."), "zh-Hans", targetLanguageCodec()),
      SETTING(softTranslationEnabled, translation,
              localizationKey(
                  "Shows a preview of the translation while a sentence is still being spoken."),
              true, boolCodec()),
      SETTING(translationDrainTimeoutSeconds, translation,
              localizationKey("How long to wait for missing translations at the end of a session."),
              4.0, secondsCodec(0, 600)),
      SETTING(recordWhileCaptioning, recording,
              localizationKey("Saves the sound and the transcript of each session."), true,
              recordingCodec()),
      SETTING(recordLosslessAudio, recording,
              localizationKey(
                  "Saves the sound without compression; the files are several times as large."),
              false, boolCodec()),
      SETTING(audioInactivityAutoStopMinutes, recording,
              localizationKey("Minutes of silence after which a session ends by itself; 0: never."),
              10, inactivityCodec()),
      SETTING(diagnosticsLevel, diagnostics,
              localizationKey("How detailed diagnostics and logs are; from standard on, they "
                              "include what was said."),
              DiagnosticsLevel::core, levelCodec()),
      SETTING(sessionDiagnosticsEnabled, diagnostics,
              localizationKey("Records every session, even if saving is switched off, and adds the "
                              "recogniser's raw results to full diagnostics."),
              false, boolCodec()),
      SETTING(appleAnalyzerDiagnosticsMode, diagnostics,
              localizationKey("How much diagnostics contain of the recogniser's raw results."),
              AppleAnalyzerDiagnosticsMode::summary, analyzerModeCodec()),
      SETTING(perfSampleIntervalSeconds, diagnostics,
              localizationKey("How often diagnostics measure the use of memory and processor."),
              2.0, secondsCodec(0, 3600)),
      SETTING(historyPlaybackDiagnosticsEnabled, diagnostics,
              localizationKey("Logs how recordings are played back."), false, boolCodec()),
      SETTING(subtitleLayoutMode, stage,
              localizationKey("How original and translation are arranged."),
              SubtitleLayoutMode::bilingualCompare, layoutCodec()),
      SETTING(subtitleLyricsLayout, stage,
              localizationKey("Shows captions like the lyrics of a song."), false, boolCodec()),
      SETTING(swapCaptionOrder, stage, localizationKey("Shows the translation above the original."),
              false, boolCodec()),
      SETTING(mergeBilingualRows, stage,
              localizationKey("Shows lines that share one translation as one line."), false,
              boolCodec()),
      SETTING(subtitleBottomPadding, stage, localizationKey("Space below the captions, in pixels."),
              100, integerCodec(0, 10000)),
      SETTING(
          subtitleReviewAutoReturnSeconds, stage,
          localizationKey(
              "After scrolling back: how many seconds until the newest captions are shown again."),
          30, integerCodec(0, 3600)),
      SETTING(smoothStreaming, stage, localizationKey("Lets words appear one after the other."),
              true, boolCodec()),
      SETTING(smoothPaceMS, stage, localizationKey("The time between two words, in milliseconds."),
              150, millisecondsCodec()),
      SETTING(highlightChanges, stage, localizationKey("Marks words that have changed."), true,
              boolCodec()),
      SETTING(highlightColorHex, stage, localizationKey("The colour of changed words."), 0x21BB54,
              colorCodec()),
      SETTING(sourceFontSize, stage, localizationKey("The font size of the original, in points."),
              24, pointsCodec()),
      SETTING(translationFontSize, stage,
              localizationKey("The font size of the translation, in points."), 20, pointsCodec()),
      SETTING(sourceFontColorHex, stage, localizationKey("The colour of the original."), 0xF2F2F4,
              colorCodec()),
      SETTING(translationFontColorHex, stage, localizationKey("The colour of the translation."),
              0xF2F2F4, colorCodec()),
      SETTING(bgColorHex, stage, localizationKey("The colour of the background."), 0, colorCodec()),
      SETTING(bgOpacity, stage, localizationKey("The opacity of the background, in per cent."), 100,
              percentCodec()),
      SETTING(keepOnTop, window, localizationKey("Keeps the window above all others."), true,
              boolCodec()),
      SETTING(announceCaptions, window,
              localizationKey("Lets a screen reader read out each caption once it is final."), true,
              boolCodec()),
      SETTING(compactToolbar, window, localizationKey("Makes the toolbar small."), false,
              boolCodec()),
      SETTING(screenCaptureProtected, window,
              localizationKey("Meant to keep the window out of screenshots and shared screens; has "
                              "no effect yet."),
              false, boolCodec()),
      SETTING(showClearSubtitlesInSubtitleToolbar, window,
              localizationKey("The toolbar has a button that clears the captions."), false,
              boolCodec()),
      SETTING(showCopyBilingualInSubtitleToolbar, window,
              localizationKey("The toolbar has a button that copies captions with translations."),
              false, boolCodec()),
      SETTING(showCopyOriginalInSubtitleToolbar, window,
              localizationKey("The toolbar has a button that copies the captions."), false,
              boolCodec()),
      SETTING(showHistoryInSubtitleToolbar, window,
              localizationKey("The toolbar has a button for the history."), false, boolCodec()),
      SETTING(showLayoutModeInSubtitleToolbar, window,
              localizationKey("The toolbar has a button for the layout."), false, boolCodec()),
      SETTING(showPinWindowInSubtitleToolbar, window,
              localizationKey("The toolbar has a button that keeps the window on top."), true,
              boolCodec()),
      SETTING(showSettingsInSubtitleToolbar, window,
              localizationKey("The toolbar has a button for the settings."), true, boolCodec()),
      SETTING(showSwapCaptionOrderInSubtitleToolbar, window,
              localizationKey("The toolbar has a button that swaps original and translation."),
              false, boolCodec()),
      SETTING(dockClickTogglesRecord, application,
              localizationKey("Launching the running program again starts or stops captions."),
              false, boolCodec()),
      SETTING(launchAtLogin, application, localizationKey("Starts the program when you log in."),
              false, boolCodec()),
      SETTING(showDockIcon, application,
              localizationKey("Shows the program in the taskbar or dock."), true, boolCodec()),
      SETTING(screenshotEnabled, application,
              localizationKey("Adds screenshots of the caption window, with the text in them, to "
                              "full diagnostics."),
              false, boolCodec()),
      SETTING(screenshotIntervalMs, application,
              localizationKey("Milliseconds between two screenshots of the window."), 1000,
              millisecondsCodec()),
      SETTING(
          arenaScreenshotEnabled, application,
          localizationKey("Adds screenshots to diagnostics, for comparisons with other programs."),
          false, boolCodec()),
      SETTING(arenaScreenshotIntervalMs, application,
              localizationKey("Milliseconds between two screenshots for comparisons."), 1000,
              millisecondsCodec()),
      SHORTCUT(shortcutCopy, localizationKey("Copies captions with translations."), 8, commandKey),
      SHORTCUT(shortcutCopyOriginal, localizationKey("Copies the captions."), 8,
               commandAndOptionKeys),
      SHORTCUT(shortcutClear, localizationKey("Clears the captions."), 14, commandKey),
      SHORTCUT(shortcutPin, localizationKey("Switches whether the window stays on top."), 35,
               commandKey),
      SHORTCUT(shortcutHistory, localizationKey("Shows the history."), 4, commandKey),
      SHORTCUT(shortcutToggleWindow, localizationKey("Shows or hides the window."), 13, commandKey),
      SHORTCUT(shortcutToggleRecord, localizationKey("Starts or stops a session."), 49, 0),
      SHORTCUT(shortcutLyricsLayout, localizationKey("Changes the layout."), 37, commandKey),
      SHORTCUT(shortcutSwapLayout, localizationKey("Swaps original and translation."), 15,
               commandKey) {
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
    std::optional<std::int64_t> smoothPaceMS; ///< `nullopt`: unchanged
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
    apply({.freezeStableSeconds = 0.60,
           .translationDrainTimeoutSeconds = 4.0,
           .duplicateCommitWindowSeconds = 4.0,
           .perfSampleIntervalSeconds = 2.0,
           .softCaptionStableSeconds = 0.30,
           .smoothPaceMS = std::nullopt});
    selectedRecognitionOptionID.restore();
}

void AppSettings::applyLowLatencyProfile() {
    apply({.freezeStableSeconds = 0.35,
           .translationDrainTimeoutSeconds = 2.0,
           .duplicateCommitWindowSeconds = 3.0,
           .perfSampleIntervalSeconds = 1.0,
           .softCaptionStableSeconds = 0.20,
           .smoothPaceMS = 100});
}
void AppSettings::applyStableTranslationProfile() {
    apply({.freezeStableSeconds = 1.00,
           .translationDrainTimeoutSeconds = 6.0,
           .duplicateCommitWindowSeconds = 5.0,
           .perfSampleIntervalSeconds = 2.0,
           .softCaptionStableSeconds = 0.45,
           .smoothPaceMS = 150});
}
void AppSettings::applyStressTestProfile() {
    apply({.freezeStableSeconds = 0.60,
           .translationDrainTimeoutSeconds = 4.0,
           .duplicateCommitWindowSeconds = 4.0,
           .perfSampleIntervalSeconds = 1.0,
           .softCaptionStableSeconds = 0.30,
           .smoothPaceMS = 120});
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
