#pragma once

#include "TessaruneCore/UUID.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tessarune {

/// One row of the history list. A plain value; its texts are ready to be shown.
struct HistoryItem {
    UUID id;
    std::optional<UUID> recordingID;
    bool live = false; ///< the recording has no end yet
    bool hasBilingualTranscript = false;
    std::string date;
    std::string time;
    std::string dur;
    double durationSeconds = 0;
    std::int64_t words = 0; ///< size of the audio in kibibytes, despite the name
    std::string note;
    std::optional<std::string> filePath;
    std::int64_t byteCount = 0;
    double startedAt = 0;

    bool operator==(const HistoryItem&) const = default;
};

} // namespace tessarune
