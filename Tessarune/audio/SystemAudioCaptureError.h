#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace tessarune {

/// Why system audio cannot be captured. `what()` is the localised description; the status is the
/// sound server's error number.
class SystemAudioCaptureError : public std::runtime_error {
  public:
    enum class Case {
        failedToCreateTap,  ///< no connection to the server
        failedToReadTapUID, ///< no output whose sound could be recorded
        failedToReadTapFormat,
        failedToCreateAggregateDevice,
        failedToCreateIOProc,
        failedToStartDevice, ///< the server refuses the record stream
        unsupportedTapFormat,
    };

    explicit SystemAudioCaptureError(Case which, std::int32_t status = 0);

    Case which() const { return which_; }
    std::int32_t status() const { return status_; }

    /// The status in words: four characters in quotes if its bytes, high to low, are printable,
    /// else the number.
    static std::string describe(std::int32_t status);

    bool operator==(const SystemAudioCaptureError& other) const {
        return which_ == other.which_ && status_ == other.status_;
    }

  private:
    Case which_;
    std::int32_t status_;
};

} // namespace tessarune
