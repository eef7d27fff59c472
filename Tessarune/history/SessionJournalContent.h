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
    /// The start of the recording on the clock of the rows' times, in seconds; see
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
    /// Without words, those of an earlier line of the row remain valid.
    static std::optional<std::string> rowLine(const CaptionSegment& row,
                                              std::span<const WordEvent> words);
};

} // namespace tessarune
