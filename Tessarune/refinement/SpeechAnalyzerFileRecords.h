#pragma once

#include "Tessarune/speech/SpeechResultSummary.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

// The diagnostic records of a file transcription.

/// A text as diagnostic records contain it: at most 120 characters, and "…" if there are more.
std::string recordTextPreview(std::string_view text);

/// One result of the recogniser.
using SpeechAnalyzerFileResultSummary = SpeechResultSummary;

/// One piece of a result.
struct SpeechAnalyzerFileSplitObservation {
    std::int64_t resultSequence = 0;
    bool resultIsFinal = false;
    std::int64_t pieceIndex = 0;
    std::int64_t pieceCount = 0;
    std::string text;
    std::int64_t characterCount = 0;
    std::int64_t wordCount = 0;
    std::optional<double> startSeconds;
    std::optional<double> endSeconds;
    std::int64_t wordTimelineCount = 0; ///< words with times
    std::string resultTextHash;
    std::string splitStrategy; ///< "sentenceSegmenter.fileFinal" or "fallback.wholeResult"
};

/// Receives the records on the main queue; either function may be empty.
struct SpeechAnalyzerFileTranscriberDiagnostics {
    std::function<void(const SpeechAnalyzerFileResultSummary&)> onResult;
    std::function<void(const SpeechAnalyzerFileSplitObservation&)> onSplit;
};

} // namespace tessarune
