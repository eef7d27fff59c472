#pragma once

#include "Tessarune/audio/AudioBuffer.h"
#include "TessaruneCore/host/Task.h"

#include <map>
#include <string>

namespace tessarune {

/// Counters by name, since the start of the session that they belong to.
using PerfStats = std::map<std::string, double>;

/// Seam: a recognition engine that takes the sound of one live session. What it recognises comes
/// back through the callbacks of the concrete type.
///
/// `start`, `stop`, `finishDrainingAndStop` and `reset` are called one after the other by the one
/// who owns the session; `append` from the capture thread at any time, `requestFinalization` and
/// `perfStats` from any thread.
class AudioTranscriber {
  public:
    virtual ~AudioTranscriber() = default;

    /// Makes the engine ready and begins a session. Throws, with a text that can be shown, if there
    /// is no session then. Resumes on the main queue.
    virtual Task<void> start(std::string locale) = 0;

    /// Takes sound, in the order in which it was captured. Without a session it is dropped.
    virtual void append(AudioBufferPtr buffer) = 0;

    /// Before the sound that is appended next, so many seconds of it were lost. Called as `append`.
    virtual void skip(double seconds) = 0;

    /// Ends the session at once; what the engine still holds is lost.
    virtual void stop() = 0;

    /// Ends the session after the results for all sound that was appended, or after a bounded time.
    /// Never throws. Resumes on the main queue.
    virtual Task<void> finishDrainingAndStop() = 0;

    /// Begins a new utterance at this moment and forgets the running one; the session goes on.
    virtual void reset() = 0;

    /// Asks for a final result of what has been heard so far. The engine may decline.
    virtual void requestFinalization(std::string reason) = 0;

    virtual PerfStats perfStats() const = 0;
};

} // namespace tessarune
