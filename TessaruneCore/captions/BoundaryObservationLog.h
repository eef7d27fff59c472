#pragma once

#include "TessaruneCore/captions/BoundaryObservation.h"
#include "TessaruneCore/diagnostics/LineLogWriter.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// One line of a boundary log.
struct BoundaryObservationRecord {
    static constexpr std::string_view queueLabel = "Tessarune.BoundaryObservationLog.Writer";

    double t = 0;
    std::string phase;
    std::string inputText;
    std::vector<std::string> softPieces;
    std::vector<std::string> hardPieces;
    std::vector<std::string> leading;
    std::string tail;
    std::vector<std::string> reasons; ///< diagnostic values

    explicit BoundaryObservationRecord(BoundaryObservation observation);

    /// A JSON object without a line feed that has every key; `nullopt` if `t` is not finite.
    std::optional<std::string> line() const;
};

/// Log of boundary decisions: why sentences were cut where they were.
namespace BoundaryObservationLog {

using Writer = RecordLogWriter<BoundaryObservationRecord, BoundaryObservation>;

} // namespace BoundaryObservationLog

} // namespace tessarune
