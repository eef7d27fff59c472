#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

// What file transcription tells of its work, for diagnostics.

/// Of which texts a record shows a beginning, and how much of it.
std::string recordTextPreview(std::string_view text);

/// One result of the recogniser.
struct SpeechAnalyzerFileResultSummary {
    std::int64_t sequence = 0; ///< from 1
    double receivedAt = 0;     ///< seconds since 1970
    std::string localeIdentifier;
    bool isFinal = false;
    std::int64_t characterCount = 0;
    std::int64_t utf8Count = 0;
    std::int64_t wordCount = 0;
    std::int64_t runCount = 0;
    std::int64_t timedRunCount = 0;
    std::optional<double> audioStartSeconds;
    std::optional<double> audioEndSeconds;
    std::optional<double> audioDurationSeconds;
    std::string textHash;
    std::string textPreview;
    std::vector<std::string> requestedSpeechOptions;
};

/// One piece into which a result was cut.
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

/// Who hears of them, on the main queue; either may be absent.
struct SpeechAnalyzerFileTranscriberDiagnostics {
    std::function<void(const SpeechAnalyzerFileResultSummary&)> onResult;
    std::function<void(const SpeechAnalyzerFileSplitObservation&)> onSplit;
};

} // namespace tessarune
