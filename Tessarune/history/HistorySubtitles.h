#pragma once

#include "Tessarune/history/HistoryTranscriptExportDocument.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tessarune {

/// What stands on the screen at one time.
struct SubtitleCue {
    std::int64_t startMS = 0;
    std::int64_t endMS = 0;
    std::vector<std::string> lines; ///< of the source, then of the translation

    bool operator==(const SubtitleCue&) const = default;
};

/// Subtitles of a recording, from the times of its words. Pure.
///
/// Cues follow each other without overlap, last 1 to 7 seconds, and have at most two lines of each
/// language, none longer than 42 characters. A cue of damaged or missing times may come late, but
/// never out of order.
namespace HistorySubtitles {

inline constexpr std::int64_t shortestCueMS = 1000;
inline constexpr std::int64_t longestCueMS = 7000;

/// `words` are those of the timeline from which the document has its sentences. `duration` is the
/// recording's, in seconds: rows without a time share what is left of it.
std::vector<SubtitleCue> cues(const HistoryTranscriptExportDocument& document,
                              const std::vector<HistoryWordTimeline::Word>& words, double duration);

/// A file for players of films.
std::string srt(const std::vector<SubtitleCue>& cues);
/// A file for browsers.
std::string webVTT(const std::vector<SubtitleCue>& cues);

} // namespace HistorySubtitles

} // namespace tessarune
