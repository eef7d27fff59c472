#pragma once

#include "Tessarune/audio/AudioBuffer.h"

#include <optional>
#include <vector>

namespace tessarune {

/// Tells sound that was lost from sound that only comes late.
///
/// The frames that have arrived tell how far a capture has come; a buffer is late by what the clock
/// is ahead of that. A program that did not run for a while finds the sound of that time waiting,
/// and the lateness melts away within moments. Where sound comes at its own pace again and is still
/// late, that much of it was lost. Until this is known it is held back here, so that a hole comes
/// to stand where it is. A value; times are host times.
class LateSound {
  public:
    struct Piece {
        double hole = 0; ///< seconds that were lost before the buffer
        AudioBufferPtr buffer;
    };

    /// The capture begins now, if no sound of it has arrived yet.
    void begin(double now) { end_ = end_.value_or(now); }
    /// The first buffer of another stream: gives the seconds that are missing before it.
    double begin(const AudioBuffer& first, double now);
    /// The next buffer of a stream: gives the seconds by which it is late.
    double add(const AudioBuffer& next, double now);

    void hold(AudioBufferPtr buffer, double late, double now);
    bool isHolding() const { return !held_.empty(); }
    /// A look, now and then while sound is held: whether since the last one it has come about as
    /// fast as it sounds.
    bool hasFoundItsPace(double now);
    /// What was held, in order, with the hole where it is if there is one.
    std::vector<Piece> release();

  private:
    struct Held {
        AudioBufferPtr buffer;
        double late;
    };

    std::optional<double> end_; ///< of the sound that has arrived, by its own count
    std::vector<Held> held_;
    double lookedAt_ = 0;
    double secondsSinceLook_ = 0; ///< of sound
};

} // namespace tessarune
