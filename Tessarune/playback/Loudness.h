#pragma once

#include "Tessarune/audio/MediaFile.h"

#include <stop_token>

namespace tessarune {

/// How loud a recording is, and what brings it to the level at which all of them are played.
struct Loudness {
    double gainDB = 0;    ///< to be added
    bool isWhole = false; ///< all of the file was heard, not only parts of it

    static constexpr double levelDB = -20;
    static constexpr double mostGainDB = 24;

    /// The gain for a mean square of samples; none for silence.
    static double gainFor(double meanSquare);

    /// Reads the file to its end, or until it is to stop. Throws MediaFileError.
    static Loudness measured(MediaFile& file, const std::stop_token& stop);
    /// What can be said within some hundredths of a second: a short file is read, of a longer one
    /// parts that lie evenly in it, as far as they can be read. Throws MediaFileError where it has
    /// no other place than its beginning. The file stands anywhere afterwards.
    static Loudness estimated(MediaFile& file);
};

/// Brings sound to a level. A new level is reached slowly enough not to be heard as a step, and
/// what would go beyond full scale is bent, not cut. One stream of sound, one thread at a time.
class LevelControl {
  public:
    static constexpr double changePerSecondDB = 6;

    void setGain(double gainDB, bool atOnce);
    void apply(AudioBuffer& sound);

  private:
    double gainDB_ = 0;
    double wantedDB_ = 0;
};

} // namespace tessarune
