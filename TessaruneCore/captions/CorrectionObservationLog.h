#pragma once

#include "TessaruneCore/captions/CorrectionObservation.h"
#include "TessaruneCore/diagnostics/LineLogWriter.h"

#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// One line of a correction log: the observation, field by field.
struct CorrectionObservationRecord : CorrectionObservation {
    static constexpr std::string_view queueLabel = "Tessarune.CorrectionObservationLog.Writer";

    /// A JSON object without a line feed; `nullopt` if `t` is not finite.
    std::optional<std::string> line() const;
};

/// Log of what finals corrected: how much of the text on screen was wrong.
namespace CorrectionObservationLog {

using Writer = RecordLogWriter<CorrectionObservationRecord, CorrectionObservation>;

} // namespace CorrectionObservationLog

} // namespace tessarune
