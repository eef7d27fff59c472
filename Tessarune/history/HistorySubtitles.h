#pragma once

#include "Tessarune/history/HistoryTranscriptExportDocument.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tessarune {

/// The text on the screen at one time.
struct SubtitleCue {
    std::int64_t startMS = 0;
    std::int64_t endMS = 0;
    std::vector<std::string> lines; ///< of the source, then of the translation

    bool operator==(const SubtitleCue&) const = default;
};

/// Subtitles of a recording, from the times of its words. Pure.
///
/// Cues are in the order of time, do not overlap, last 1 to 7 seconds, and have at most two lines
/// of each language with at most 42 columns each (see SubtitleText), even if times are damaged or
/// missing.
namespace HistorySubtitles {

inline constexpr std::int64_t shortestCueMS = 1000;
inline constexpr std::int64_t longestCueMS = 7000;

/// `words` must be from the same timeline as the document's sentences. Rows without a time
/// share the time between their neighbours. At the end of the text, they share the time up to
/// `duration`, the recording's length in seconds.
std::vector<SubtitleCue> cues(const HistoryTranscriptExportDocument& document,
                              const std::vector<HistoryWordTimeline::Word>& words, double duration);

/// SubRip, for media players.
std::string srt(const std::vector<SubtitleCue>& cues);
/// WebVTT, for browsers.
std::string webVTT(const std::vector<SubtitleCue>& cues);

} // namespace HistorySubtitles

} // namespace tessarune
