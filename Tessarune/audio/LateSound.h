#pragma once

#include "Tessarune/audio/AudioBuffer.h"

#include <optional>
#include <vector>

namespace tessarune {

/// Distinguishes lost sound from late sound.
///
/// The number of arrived frames tells how far a capture has come; a buffer is late by the clock's
/// lead over that. A program that was suspended finds the sound of that time queued, and the
/// lateness disappears within moments. If sound arrives at its own pace again and is still late,
/// that much of it was lost. Until this is known the sound is held here, so that the gap gets its
/// right place. A value; times are host times.
class LateSound {
  public:
    struct Piece {
        double hole = 0; ///< seconds that were lost before the buffer
        AudioBufferPtr buffer;
    };

    /// The capture begins now, unless some of its sound has arrived.
    void begin(double now) { end_ = end_.value_or(now); }
    /// The first buffer of another stream: returns the seconds missing before it.
    double begin(const AudioBuffer& first, double now);
    /// The next buffer of a stream: returns the seconds by which it is late.
    double add(const AudioBuffer& next, double now);

    void hold(AudioBufferPtr buffer, double late, double now);
    bool isHolding() const { return !held_.empty(); }
    /// Call now and then while sound is held: whether it has arrived at about its own pace since
    /// the last call.
    bool hasFoundItsPace(double now);
    /// The held sound, in order, with the gap in its place if there is one.
    std::vector<Piece> release();

  private:
    struct Held {
        AudioBufferPtr buffer;
        double late;
    };

    std::optional<double> end_; ///< of the arrived sound, by its own count
    std::vector<Held> held_;
    double lookedAt_ = 0;
    double secondsSinceLook_ = 0; ///< of sound
};

} // namespace tessarune
