#pragma once

#include "TessaruneCore/captions/CorrectionObservation.h"

#include <optional>
#include <string>

namespace tessarune {

/// One line of a correction log: the observation, field by field.
struct CorrectionObservationRecord : CorrectionObservation {
    /// A JSON object without a line feed; `nullopt` if `t` is not finite.
    std::optional<std::string> line() const;
};

} // namespace tessarune
