#pragma once

#include "TessaruneCore/recognition/ASREvent.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// One line of an event log: an event and the time at which it was logged. A record read from a
/// file may have any kind and any subset of the optional fields.
struct ASREventRecord {
    double t = 0; ///< seconds since 1970
    std::string kind;
    std::string text;
    std::optional<std::int64_t> revision;
    std::optional<double> timestamp;
    std::optional<double> start;
    std::optional<double> end;
    std::optional<std::string> reason;
    std::optional<std::vector<ASRWordTiming>> words;

    ASREventRecord() = default;
    ASREventRecord(double t, ASREvent event);

    /// The event, with defaults for absent fields; `nullopt` for an unknown kind.
    std::optional<ASREvent> asEvent() const;

    /// A JSON object without a line feed; `nullopt` if a number is not finite.
    std::optional<std::string> line() const;
    /// Parses a JSON object; `nullopt` if it is not a record.
    static std::optional<ASREventRecord> fromLine(std::string_view line);
};

} // namespace tessarune
