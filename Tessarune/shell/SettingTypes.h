#pragma once

namespace tessarune {

/// How source and translation stand to each other on the caption stage.
enum class SubtitleLayoutMode {
    lyrics,           ///< two separate streams
    bilingualCompare, ///< each row with its translation under it
};

/// How much of the recogniser's own results a diagnostics run keeps.
enum class AppleAnalyzerDiagnosticsMode { summary, fullRaw, off };

} // namespace tessarune
