#pragma once

#include "Tessarune/audio/AudioBuffer.h"

#include <optional>
#include <vector>

namespace tessarune {

/// Distinguishes lost sound from late sound.
///
/// The number of frames that have arrived tells when the next buffer is due. How much later the
/// buffer arrives is its lateness. While the program is suspended, the server may queue sound.
/// Queued sound then arrives quickly, and the lateness disappears within moments. If sound arrives
/// at its normal pace and stays late, the lateness is the length of the lost sound. Late sound is
/// held here until it is known whether sound was lost, so that the gap is reported at the right
/// place. A value; times are host times.
class LateSound {
  public:
    struct Piece {
        double gap = 0; ///< seconds lost before the buffer
        AudioBufferPtr buffer;
    };

    /// Notes the start of the capture, unless some of its sound has already arrived.
    void begin(double now) { end_ = end_.value_or(now); }
    /// Adds the first buffer of a stream; returns the seconds missing before it.
    double begin(const AudioBuffer& first, double now);
    /// Adds the next buffer of the stream; returns its lateness in seconds.
    double add(const AudioBuffer& next, double now);

    /// Holds an added buffer back.
    void hold(AudioBufferPtr buffer, double late, double now);
    bool isHolding() const { return !held_.empty(); }
    /// Returns whether sound has arrived at about its normal pace since the previous call. Call it
    /// repeatedly while sound is held.
    bool hasSteadyPace(double now);
    /// Returns the held sound, in order, with the gap at its place if sound was lost.
    std::vector<Piece> release();

  private:
    struct Held {
        AudioBufferPtr buffer;
        double late;
    };

    std::optional<double> end_; ///< when the arrived sound ends, calculated from its frames
    std::vector<Held> held_;
    double checkedAt_ = 0;
    double secondsSinceCheck_ = 0; ///< seconds of sound that have arrived since `checkedAt_`
};

} // namespace tessarune
