#pragma once

#include "Tessarune/audio/AudioBuffer.h"
#include "TessaruneCore/host/Task.h"

#include <map>
#include <string>

namespace tessarune {

/// A session's counters by name, counted from its start.
using PerfStats = std::map<std::string, double>;

/// Interface: a recognition engine for the sound of a live session. Its results arrive through the
/// callbacks of the concrete type.
///
/// The owner of the session calls `start`, `stop`, `finishDrainingAndStop` and `reset`, one at a
/// time. The capture thread calls `append` and `skip` at any time. Any thread may call
/// `requestFinalization` and `perfStats`.
class AudioTranscriber {
  public:
    virtual ~AudioTranscriber() = default;

    /// Prepares the engine and begins a session. On failure, throws an exception with a text for
    /// the user and leaves no session. Resumes on the main queue.
    virtual Task<void> start(std::string locale) = 0;

    /// Feeds sound in the order of its capture. Sound is dropped while there is no session.
    virtual void append(AudioBufferPtr buffer) = 0;

    /// Reports `seconds` of lost sound before the next appended buffer. Same thread as `append`.
    virtual void skip(double seconds) = 0;

    /// Ends the session at once; unprocessed sound is lost.
    virtual void stop() = 0;

    /// Ends the session once the results for all appended sound have arrived, or after a limited
    /// time. Never throws. Resumes on the main queue.
    virtual Task<void> finishDrainingAndStop() = 0;

    /// Begins a new utterance now and forgets the last partial; the session continues.
    virtual void reset() = 0;

    /// Asks for a final result for the sound so far. The engine may decline.
    virtual void requestFinalization(std::string reason) = 0;

    virtual PerfStats perfStats() const = 0;
};

} // namespace tessarune
