#pragma once

#include "Tessarune/history/HistoryWordTimeline.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// What the recogniser made of a whole recording: its sentences in the order in which they were
/// found, with the words of each. Times are seconds of the recognised sound. A plain value.
struct SpeechAnalyzerFileTranscriptionResult {
    struct Word {
        std::string text;
        double start = 0;
        double end = 0;

        bool operator==(const Word&) const = default;
    };

    struct Segment {
        std::string text;
        double start = 0;
        double end = 0;
        std::vector<Word> words; ///< empty where the recogniser gave no times for them

        bool operator==(const Segment&) const = default;
    };

    std::string localeIdentifier;
    std::vector<Segment> segments;
    double audioOnsetSeconds = 0; ///< when the recording is first loud

    bool operator==(const SpeechAnalyzerFileTranscriptionResult&) const = default;

    /// The sentences, one a line.
    std::string sourceText() const;

    /// When its first word is heard; nothing without a word.
    std::optional<double> firstSoundSeconds() const;

    /// The result with times that count from the start of the recording. Recognisers may report
    /// late, so that the first word is pulled back to where the recording is first loud; nothing
    /// is ever moved forward.
    SpeechAnalyzerFileTranscriptionResult pulledBackToOnset() const;

    /// Where the words are heard, after they were pulled back; nothing if there is no text.
    std::optional<HistoryWordTimeline> wordTimeline(std::string_view recognitionOptionID) const;
};

} // namespace tessarune
