#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/Observations.h"
#include "TessaruneCore/observation/Published.h"

#include <cstdint>
#include <string>

namespace tessarune {

// Each of these states holds the settings that one view reads, so that a change of another setting
// does not redraw the view.

struct SubtitleCaptionSettingsViewState {
    bool translationEnabled = false;
    /// The layout to draw, which may differ from the setting.
    SubtitleLayoutMode subtitleLayoutMode = SubtitleLayoutMode::bilingualCompare;
    bool swapCaptionOrder = false;
    bool mergeBilingualRows = false;
    std::int64_t subtitleBottomPadding = 0;
    std::int64_t subtitleReviewAutoReturnSeconds = 0;
    bool smoothStreaming = false;
    std::int64_t smoothPaceMS = 0;
    bool highlightChanges = false;
    std::int64_t highlightColorHex = 0;
    std::int64_t sourceFontSize = 0;
    std::int64_t translationFontSize = 0;
    std::int64_t sourceFontColorHex = 0;
    std::int64_t translationFontColorHex = 0;

    static SubtitleCaptionSettingsViewState of(const AppSettings& settings);
    bool operator==(const SubtitleCaptionSettingsViewState&) const = default;
};

struct SubtitleToolbarSettingsViewState {
    std::string translationBackend;
    std::string translationTargetLanguage;
    bool compactToolbar = false;
    bool showLayoutMode = false;
    bool showSwapCaptionOrder = false;
    bool showCopyBilingual = false;
    bool showCopyOriginal = false;
    bool showClearSubtitles = false;
    bool showPinWindow = false;
    bool showHistory = false;
    bool showSettings = false;
    SubtitleLayoutMode subtitleLayoutMode = SubtitleLayoutMode::bilingualCompare;
    bool swapCaptionOrder = false;
    bool keepOnTop = false;

    static SubtitleToolbarSettingsViewState of(const AppSettings& settings);
    bool operator==(const SubtitleToolbarSettingsViewState&) const = default;
};

struct SubtitleWindowSettingsViewState {
    bool keepOnTop = false;
    std::int64_t bgColorHex = 0;
    std::int64_t bgOpacity = 0;

    static SubtitleWindowSettingsViewState of(const AppSettings& settings);
    bool operator==(const SubtitleWindowSettingsViewState&) const = default;
};

/// Publishes the view state after a change of the settings, if the view state has changed. Changes
/// made together, such as by a profile, are published once.
///
/// Main queue. Host and settings must outlive it.
template <typename ViewState>
class SubtitleSettingsStore {
  public:
    SubtitleSettingsStore(Host& host, AppSettings& settings);
    ~SubtitleSettingsStore() { refresh_.cancel(); }
    SubtitleSettingsStore(const SubtitleSettingsStore&) = delete;
    SubtitleSettingsStore& operator=(const SubtitleSettingsStore&) = delete;

    /// Assigned only by this class.
    Published<ViewState> state;

  private:
    void scheduleRefresh();

    Host& host_;
    const AppSettings& settings_;
    bool refreshScheduled_ = false;
    DelayedCall refresh_;
    Observations observations_;
};

using SubtitleCaptionSettingsStore = SubtitleSettingsStore<SubtitleCaptionSettingsViewState>;
using SubtitleToolbarSettingsStore = SubtitleSettingsStore<SubtitleToolbarSettingsViewState>;
using SubtitleWindowSettingsStore = SubtitleSettingsStore<SubtitleWindowSettingsViewState>;

} // namespace tessarune
