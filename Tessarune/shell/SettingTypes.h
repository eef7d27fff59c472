#pragma once

#include "TessaruneCore/text/Localization.h"

#include <string_view>

namespace tessarune {

/// The groups of settings, in the order in which they are shown.
enum class SettingGroup {
    recognition,
    translation,
    recording,
    diagnostics,
    stage,
    window,
    application,
    shortcuts,
};

/// The group's heading, as a localisation key.
constexpr std::string_view title(SettingGroup group) {
    switch (group) {
    case SettingGroup::recognition:
        return localizationKey("Recognition and captions");
    case SettingGroup::translation:
        return localizationKey("Translation");
    case SettingGroup::recording:
        return localizationKey("Recording and the session");
    case SettingGroup::diagnostics:
        return localizationKey("Diagnostics");
    case SettingGroup::stage:
        return localizationKey("Captions in the window");
    case SettingGroup::window:
        return localizationKey("The caption window and its toolbar");
    case SettingGroup::application:
        return localizationKey("The application");
    case SettingGroup::shortcuts:
        return localizationKey("Keyboard shortcuts");
    }
    return {};
}

/// Whether the terminal program ignores the settings of this group.
constexpr bool isForWindowAlone(SettingGroup group) {
    return group >= SettingGroup::stage;
}

/// The description of a setting for a user.
struct SettingInfo {
    SettingGroup group = SettingGroup::application;
    std::string_view about;        ///< what the setting does, as a localisation key
    std::string_view meaning = {}; ///< the meaning of its values, likewise; empty if it is obvious
};

/// The arrangement of source and translation on the caption stage.
enum class SubtitleLayoutMode {
    lyrics,           ///< two separate streams
    bilingualCompare, ///< each row with its translation under it
};

/// How many of the recogniser's own results a diagnostics run keeps.
enum class AppleAnalyzerDiagnosticsMode { summary, fullRaw, off };

/// The mode's name in settings, logs and manifests.
constexpr std::string_view name(AppleAnalyzerDiagnosticsMode mode) {
    switch (mode) {
    case AppleAnalyzerDiagnosticsMode::summary:
        return "summary";
    case AppleAnalyzerDiagnosticsMode::fullRaw:
        return "fullRaw";
    case AppleAnalyzerDiagnosticsMode::off:
        return "off";
    }
    return {};
}

} // namespace tessarune
