#pragma once

#include "TessaruneCore/UUID.h"
#include "TessaruneCore/captions/CaptionSegment.h"
#include "TessaruneCore/captions/WordEvent.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tessarune {

/// The content of a session's journal: NDJSON, one object per line (docs/data-directory.md).
struct SessionJournalContent {
    /// When the recording started, in seconds of the same clock as the times of the rows; see
    /// RecordingMetadata::monotonicStart.
    std::optional<double> recordingStartedAt;
    std::string recognitionOptionID;
    std::vector<CaptionSegment> rows; ///< in the order in which they were committed
    std::unordered_map<UUID, std::vector<WordEvent>> wordEvents;
    std::size_t unreadableLines = 0;

    /// Reads every complete line, even if others are damaged.
    static SessionJournalContent decoded(std::string_view text);

    // A line without its line feed; `nullopt` if a time is not finite.

    static std::optional<std::string> sessionLine(double recordingStartedAt,
                                                  std::string_view recognitionOptionID);
    /// If `words` is empty, the words of an earlier line of the same row remain valid.
    static std::optional<std::string> rowLine(const CaptionSegment& row,
                                              std::span<const WordEvent> words);
};

} // namespace tessarune
