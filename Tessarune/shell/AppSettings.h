#pragma once

#include "Tessarune/shell/Setting.h"
#include "Tessarune/shell/SettingTypes.h"
#include "TessaruneCore/diagnostics/DiagnosticsLevel.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tessarune {

/// A keyboard shortcut as it is stored: a virtual key code and a modifier mask, both numbered as on
/// the desktop for which the design was first written (docs/glossary.md).
struct ShortcutSetting {
    Setting<std::int64_t> keyCode;
    Setting<std::int64_t> modifiers;
};

/// The one observable store of the user's settings. A setting's key is its member's name; the two
/// settings of a shortcut add "KeyCode" and "Modifiers" to it. A setting is stored at once when it
/// is assigned. If no value is stored, it has its first-launch value; for an invalid stored value
/// see SettingCodec. Main queue; other threads get copies.
class AppSettings {
  private:
    UserDefaults& store_;
    std::vector<AnySetting*> all_; // declared before the settings, which add themselves

  public:
    /// The settings follow changes of the store by other programs. The store must outlive them.
    explicit AppSettings(UserDefaults& store);
    ~AppSettings();
    AppSettings(const AppSettings&) = delete;
    AppSettings& operator=(const AppSettings&) = delete;

    /// All settings, sorted by key.
    const std::vector<AnySetting*>& all() const { return all_; }
    /// Null for an unknown key.
    AnySetting* find(std::string_view key) const;
    /// Reads all stored values again.
    void reload();

    /// Counts the reports of UserDefaults::observe: changes of the store by other programs, and
    /// possibly by this program. Assigned after the settings have been updated.
    Published<std::uint64_t> changesFromElsewhere;
    /// Returns the speech models that `speechModel` may name; set by the code that knows them.
    /// While there is no such function, any name is valid.
    std::function<std::vector<std::string>()> speechModelNames;

    // Recognition and captions
    Setting<std::string> selectedRecognitionOptionID;
    Setting<std::string> speechModel; ///< "automatic" or a model's name
    Setting<std::string>
        modelMirror; ///< the server that models are downloaded from; empty: the publishers' servers
    Setting<bool> sentenceSegmentation;
    Setting<bool> trueFreeze;
    Setting<bool> clauseLevelSegmentation;
    Setting<double> freezeStableSeconds;
    Setting<double> duplicateCommitWindowSeconds;
    Setting<bool> softCaptionEnabled;
    Setting<double> softCaptionStableSeconds;
    Setting<bool> appleAnalyzerEarlyFinalize;
    Setting<bool> appleAnalyzerHistoryRefinement;

    // Translation
    Setting<std::string> translationBackend;
    Setting<std::string> translationTargetLanguage;
    Setting<bool> softTranslationEnabled;
    Setting<double> translationDrainTimeoutSeconds;

    // Recording and the session
    Setting<bool> recordWhileCaptioning;
    Setting<bool> recordLosslessAudio;
    Setting<std::int64_t> audioInactivityAutoStopMinutes;

    // Diagnostics
    Setting<DiagnosticsLevel> diagnosticsLevel;
    Setting<bool> sessionDiagnosticsEnabled;
    Setting<AppleAnalyzerDiagnosticsMode> appleAnalyzerDiagnosticsMode;
    Setting<double> perfSampleIntervalSeconds;
    Setting<bool> historyPlaybackDiagnosticsEnabled;

    // The caption stage
    Setting<SubtitleLayoutMode> subtitleLayoutMode;
    Setting<bool> subtitleLyricsLayout;
    Setting<bool> swapCaptionOrder;
    Setting<bool> mergeBilingualRows;
    Setting<std::int64_t> subtitleBottomPadding;
    Setting<std::int64_t> subtitleReviewAutoReturnSeconds;
    Setting<bool> smoothStreaming;
    Setting<std::int64_t> smoothPaceMS;
    Setting<bool> highlightChanges;
    Setting<std::int64_t> highlightColorHex;
    Setting<std::int64_t> sourceFontSize;
    Setting<std::int64_t> translationFontSize;
    Setting<std::int64_t> sourceFontColorHex;
    Setting<std::int64_t> translationFontColorHex;
    Setting<std::int64_t> bgColorHex;
    Setting<std::int64_t> bgOpacity;

    // The caption window and its toolbar
    Setting<bool> keepOnTop;
    Setting<bool> announceCaptions;
    Setting<bool> compactToolbar;
    Setting<bool> screenCaptureProtected;
    Setting<bool> showClearSubtitlesInSubtitleToolbar;
    Setting<bool> showCopyBilingualInSubtitleToolbar;
    Setting<bool> showCopyOriginalInSubtitleToolbar;
    Setting<bool> showHistoryInSubtitleToolbar;
    Setting<bool> showLayoutModeInSubtitleToolbar;
    Setting<bool> showPinWindowInSubtitleToolbar;
    Setting<bool> showSettingsInSubtitleToolbar;
    Setting<bool> showSwapCaptionOrderInSubtitleToolbar;

    // The application
    Setting<bool> dockClickTogglesRecord;
    Setting<bool> launchAtLogin;
    Setting<bool> showDockIcon;
    Setting<bool> screenshotEnabled;
    Setting<std::int64_t> screenshotIntervalMs;
    Setting<bool> arenaScreenshotEnabled;
    Setting<std::int64_t> arenaScreenshotIntervalMs;

    // Shortcuts
    ShortcutSetting shortcutCopy;
    ShortcutSetting shortcutCopyOriginal;
    ShortcutSetting shortcutClear;
    ShortcutSetting shortcutPin;
    ShortcutSetting shortcutHistory;
    ShortcutSetting shortcutToggleWindow;
    ShortcutSetting shortcutToggleRecord;
    ShortcutSetting shortcutLyricsLayout;
    ShortcutSetting shortcutSwapLayout;

    // Profiles of tuning settings

    void applyInternalBetaRecommendedDefaults();
    void applyLowLatencyProfile();
    void applyStableTranslationProfile();
    void applyStressTestProfile();

    // These restore first-launch values.

    void resetSubtitleDefaults();
    void resetShortcutDefaults();

    /// Keeps only the modifiers that a shortcut can use: drops Caps Lock, for example, and the bits
    /// that tell a left modifier key from a right one.
    static std::int64_t normalizeShortcutModifiers(std::int64_t mask);

    /// The tuning settings as text, to be copied into a report.
    std::string currentTuningSummaryText() const;

    /// The layout to draw: the stored one if translation is enabled, otherwise `lyrics`.
    SubtitleLayoutMode effectiveSubtitleLayoutMode(bool translationEnabled) const;
    /// Stores the next layout; if translation is not enabled, this is always `lyrics`.
    void cycleSubtitleLayoutMode(bool translationEnabled);

  private:
    struct Profile;
    void apply(const Profile& profile);
    ShortcutSetting shortcut(const char* name, std::string_view about, std::int64_t keyCode,
                             std::int64_t modifiers);
    SettingCodec<std::string> speechModelCodec();
};

} // namespace tessarune
