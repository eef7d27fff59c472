#pragma once

#include "TessaruneCore/LocalizedError.h"

#include <cstdint>
#include <string>

namespace tessarune {

/// Thrown if system audio cannot be captured. `status` is the sound server's error number.
class SystemAudioCaptureError : public LocalizedError {
  public:
    enum class Case {
        failedToCreateTap,  ///< no connection to the server
        failedToReadTapUID, ///< no output whose sound can be recorded
        failedToReadTapFormat,
        failedToCreateAggregateDevice,
        failedToCreateIOProc,
        failedToStartDevice, ///< the server refuses the record stream
        unsupportedTapFormat,
    };

    explicit SystemAudioCaptureError(Case which, std::int32_t status = 0);

    /// The status as text: its four bytes, from high to low, as characters in quotes if they are
    /// printable; otherwise the number.
    static std::string describe(std::int32_t status);
};

} // namespace tessarune
