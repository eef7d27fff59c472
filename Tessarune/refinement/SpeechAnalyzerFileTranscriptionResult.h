#pragma once

#include "Tessarune/history/HistoryWordTimeline.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// The transcription of an entire recording: its sentences in the order of recognition, with the
/// words of each. Times are seconds of the recognised sound. A plain value.
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
        std::vector<Word> words; ///< empty if the recogniser reported no word times

        bool operator==(const Segment&) const = default;
    };

    std::string localeIdentifier;
    std::vector<Segment> segments;
    double audioOnsetSeconds = 0; ///< the earliest time at which the first word can begin

    bool operator==(const SpeechAnalyzerFileTranscriptionResult&) const = default;

    /// The sentences, one per line.
    std::string sourceText() const;

    /// The earliest time of a word, or of a sentence without word times; `nullopt` without
    /// sentences.
    std::optional<double> firstSoundSeconds() const;

    /// The result with corrected times, because recognisers may report times that are too late.
    /// All times move back by the same amount, so that the first word begins at
    /// `audioOnsetSeconds`; they never move forward.
    SpeechAnalyzerFileTranscriptionResult pulledBackToOnset() const;

    /// The times of words and sentences, pulled back to the onset; `nullopt` if there is no text.
    std::optional<HistoryWordTimeline> wordTimeline(std::string_view recognitionOptionID) const;
};

} // namespace tessarune
