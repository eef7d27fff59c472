#pragma once

#include "Tessarune/audio/AudioBuffer.h"
#include "TessaruneCore/host/Task.h"

#include <map>
#include <string>

namespace tessarune {

/// Counters by name, since the start of the session that they belong to.
using PerfStats = std::map<std::string, double>;

/// Seam: a recognition engine for the sound of one live session. Its results arrive through the
/// callbacks of the concrete type.
///
/// The owner of the session calls `start`, `stop`, `finishDrainingAndStop` and `reset` one after
/// the other; the capture thread calls `append` at any time, and any thread calls
/// `requestFinalization` and `perfStats`.
class AudioTranscriber {
  public:
    virtual ~AudioTranscriber() = default;

    /// Prepares the engine and begins a session. On failure throws, with a text that can be shown,
    /// and leaves no session. Resumes on the main queue.
    virtual Task<void> start(std::string locale) = 0;

    /// Takes sound, in the order in which it was captured. Without a session it is dropped.
    virtual void append(AudioBufferPtr buffer) = 0;

    /// So many seconds of sound were lost before the next appended buffer. Same thread as `append`.
    virtual void skip(double seconds) = 0;

    /// Ends the session at once; unprocessed sound is lost.
    virtual void stop() = 0;

    /// Ends the session after the results for all appended sound, or after a bounded time. Never
    /// throws. Resumes on the main queue.
    virtual Task<void> finishDrainingAndStop() = 0;

    /// Begins a new utterance now and drops the current one; the session continues.
    virtual void reset() = 0;

    /// Asks for a final result of what has been heard so far. The engine may decline.
    virtual void requestFinalization(std::string reason) = 0;

    virtual PerfStats perfStats() const = 0;
};

} // namespace tessarune
