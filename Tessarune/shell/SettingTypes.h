#pragma once

#include <string_view>

namespace tessarune {

/// How source and translation stand to each other on the caption stage.
enum class SubtitleLayoutMode {
    lyrics,           ///< two separate streams
    bilingualCompare, ///< each row with its translation under it
};

/// How much of the recogniser's own results a diagnostics run keeps.
enum class AppleAnalyzerDiagnosticsMode { summary, fullRaw, off };

/// The mode's word in settings, logs and manifests.
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
