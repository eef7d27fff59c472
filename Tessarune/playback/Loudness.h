#pragma once

#include "Tessarune/audio/MediaFile.h"

#include <stop_token>

namespace tessarune {

/// The loudness of a recording, and the gain that brings it to the common playback level.
struct Loudness {
    double gainDB = 0;    ///< the gain that playback applies
    bool isExact = false; ///< measured over the entire file, not estimated from parts

    static constexpr double levelDB = -20; ///< the common playback level
    static constexpr double maximumGainDB = 24;

    /// The gain for a mean square of samples; 0 for silence.
    static double gainFor(double meanSquare);

    /// Reads the file to its end, or until a stop. Throws MediaFileError.
    static Loudness measured(MediaFile& file, const std::stop_token& stop);
    /// A quick estimate, which takes a few hundredths of a second. Reads a short file completely,
    /// evenly spaced parts of a longer file, and the beginning of a file whose duration is unknown.
    /// Sound that cannot be read does not count. Throws MediaFileError if a longer file cannot
    /// seek. Leaves the file at an arbitrary position.
    static Loudness estimated(MediaFile& file);
};

/// Applies a gain to sound. Changes of the gain are gradual, so that they are not heard as steps,
/// and peaks near and beyond full scale are compressed, not clipped. For one stream of sound; one
/// thread at a time.
class LevelControl {
  public:
    static constexpr double changePerSecondDB = 6;

    /// With `atOnce`, the change is not gradual.
    void setGain(double gainDB, bool atOnce);
    void apply(AudioBuffer& sound);

  private:
    double gainDB_ = 0;
    double wantedDB_ = 0;
};

} // namespace tessarune
