#pragma once

#include "TessaruneCore/recognition/ASREvent.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// One line of an event log: an event and when it was logged. What is read from a file may hold
/// any kind and any selection of the optional fields. Compared byte for byte.
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

    /// The event, what is absent being filled in; nothing for an unknown kind.
    std::optional<ASREvent> asEvent() const;

    /// As a JSON object without a line feed; nothing if a number is infinite or none.
    std::optional<std::string> line() const;
    /// From a JSON object; nothing if it is no record.
    static std::optional<ASREventRecord> fromLine(std::string_view line);
};

} // namespace tessarune
