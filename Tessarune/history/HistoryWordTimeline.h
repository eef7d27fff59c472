#pragma once

#include "TessaruneCore/UUID.h"
#include "TessaruneCore/captions/CaptionSegment.h"
#include "TessaruneCore/captions/WordEvent.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tessarune {

/// The link between a recording's text and its sound: when each word and each sentence is heard, in
/// seconds from the start of the recording. Sentences are in the order of time.
///
/// A plain value; all its functions are pure.
struct HistoryWordTimeline {
    struct Word {
        std::string w; ///< as written in the text, punctuation included
        double t = 0;
        std::optional<UUID> segmentID; ///< of its row; `nullopt` for a transcribed file

        bool operator==(const Word&) const = default;
    };

    struct Sentence {
        std::string source;
        double start = 0;
        double end = 0;
        std::optional<UUID> segmentID;
        std::string timingKind;

        bool operator==(const Sentence&) const = default;
    };

    /// How the times were found; each comment says whether the timeline or a sentence carries the
    /// value.
    struct TimingKind {
        /// Timeline or sentence: from the sound of each word.
        static constexpr std::string_view audioWord = "audioWord";
        /// Timeline or sentence: from the sound of the row.
        static constexpr std::string_view audioSegment = "audioSegment";
        /// Timeline: words are spread over their row.
        static constexpr std::string_view segmentInterpolated = "segmentInterpolated";
        /// Sentence: when its row arrived.
        static constexpr std::string_view asrSegment = "asrSegment";
        /// Timeline: when the words arrived.
        static constexpr std::string_view asrFirstSeen = "asrFirstSeen";
        /// Sentence: from its words.
        static constexpr std::string_view derivedFromWords = "derivedFromWords";
    };

    static constexpr std::int64_t currentSchemaVersion = 2;

    /// Clamps a time from a file, which may be damaged or come from elsewhere, to a time that a
    /// recording can have.
    static double saneTime(double seconds);

    std::int64_t schemaVersion = currentSchemaVersion;
    std::string recognitionOptionID;
    std::string timingKind;
    std::vector<Word> words;
    std::vector<Sentence> sentences;

    bool operator==(const HistoryWordTimeline&) const = default;

    bool isEmpty() const { return words.empty() && sentences.empty(); }

    using WordEvents = std::unordered_map<UUID, std::vector<WordEvent>>;

    /// Builds a timeline from the committed rows of a live session. Times of rows and words may be
    /// on the wall clock (seconds since 1970, as `recordingStartedAt` is) or already relative to
    /// the recording. `nullopt` if the session was not recorded or no row has text.
    static std::optional<HistoryWordTimeline> build(std::optional<double> recordingStartedAt,
                                                    std::string_view recognitionOptionID,
                                                    std::span<const CaptionSegment> segments,
                                                    const WordEvents& wordEvents);

    /// The same timeline, limited to sound of this length in seconds. A row that was still open
    /// when the session stopped ends with the stop, which may be up to three seconds after the last
    /// sound; the times of such a row are limited to the sound. If a row begins more than three
    /// seconds after the last sound, the recording broke off during the session; such a row keeps
    /// its times.
    HistoryWordTimeline endingBy(double seconds) const;

    /// Sentences derived from runs of words of the same row, for timelines that were saved without
    /// sentences.
    std::vector<Sentence> derivedSentencesFromWords() const;

    /// For each row of a bilingual text, the index of its sentence; `nullopt` for a row without
    /// one. The texts may differ, because the timeline may have been refined after the bilingual
    /// text was written. First, a row and a sentence are paired if they have the same text and no
    /// other row or sentence has it. If the rows and the sentences of these pairs are in different
    /// orders, the largest set of pairs in one order is kept. The rows and sentences between two
    /// pairs are paired in order if there are equally many, otherwise from both ends as long as
    /// their texts are equal. If nothing matches at all, all are paired in order.
    static std::vector<std::optional<std::size_t>>
    sentencesOfRows(const std::vector<std::string>& rows, const std::vector<Sentence>& sentences);

    /// The start of each sentence; if `sentences` is empty, of each derived sentence.
    std::vector<double> sentenceStarts() const;

    /// The sentence that is heard at `time`: the last one that has started; `nullopt` before the
    /// first.
    std::optional<std::size_t> activeSentenceIndex(double time) const;

    /// The sidecar file: a JSON object, pretty-printed with sorted keys.
    std::string encoded() const;
    /// `nullopt` if the text is not such an object. Files of version 1 have no version and no
    /// sentences.
    static std::optional<HistoryWordTimeline> decoded(std::string_view json);
};

} // namespace tessarune
