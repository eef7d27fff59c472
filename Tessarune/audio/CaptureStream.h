#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/SoundServer.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// An event of a running capture.
struct CaptureEvent {
    enum class Kind {
        interrupted,  ///< the sound has stopped; `status` and `text` say why
        resumed,      ///< the next buffer follows a gap of `gapSeconds`: after an interruption,
                      ///< or after a change to a device whose first sound was late
        deviceChanged ///< the capture has changed to another device, named `text`
    };
    Kind kind;
    int status = 0; ///< the server's error number
    std::string text;
    double gapSeconds = 0;

    bool operator==(const CaptureEvent&) const = default;
};

/// Keeps a capture running while devices and the server come and go.
///
/// System audio and the default microphone follow the default as it changes. A chosen microphone
/// that goes away is replaced by the default until it is back. Without a device or a server, the
/// capture waits for one. A continuous stream that delivers nothing for `stallSeconds` is reopened.
/// On a change of the device, the old stream delivers until the new one is open, so no available
/// sound is lost.
///
/// Call all operations on the executor that was passed to the constructor; handlers run there, but
/// none after `stop`. The destructor stops the capture. The server must outlive it.
class CaptureStream {
  public:
    struct Handlers {
        std::function<void(AudioBufferPtr)> onBuffer;
        std::function<void(const CaptureEvent&)> onEvent;
    };
    /// The server's current device for a source.
    struct Source {
        std::string id;
        std::string deviceName;
        AudioFormat format; ///< the format that the stream will deliver
    };

    /// An output that was suspended while idle delivers its first sound after up to two seconds,
    /// which must not count as a stall.
    static constexpr double stallSeconds = 2.5;
    /// If a device replaces another that was still delivering, a smaller gap is ignored. Sound that
    /// is held back because it is late (see LateSound) is released when its lateness falls below
    /// this.
    static constexpr double smallestGapSeconds = 0.25;
    /// The timeout for reopening starts short, because a server that is busy moving streams may
    /// never answer one request but answers the next at once. It grows with each failed attempt,
    /// because a slow device needs more time. The first opening has the longest timeout.
    static constexpr double shortestOpenSeconds = 1.0;
    static constexpr double longestOpenSeconds = 5.0;
    static constexpr double shortestRetrySeconds = 0.25;
    static constexpr double longestRetrySeconds = 2.0;

    CaptureStream(SoundServer& server, Executor executor, AudioSource source, Handlers handlers);
    ~CaptureStream();
    CaptureStream(const CaptureStream&) = delete;
    CaptureStream& operator=(const CaptureStream&) = delete;

    /// Opens the source, which must exist; from then on, the capture continues until `stop`. Throws
    /// SoundServerError if it cannot start, with the status `streamKilled` if `stop` was called in
    /// the meantime.
    Task<void> start();
    void stop();

    /// The device for `source` among `devices`, or `nullopt` if it is absent and nothing can
    /// replace it. System audio has one channel, mixed by the server.
    static std::optional<Source> resolve(const AudioSource& source, const SoundDevices& devices);
    /// Like `resolve`, but a chosen microphone must be present.
    static std::optional<Source> resolveExactly(const AudioSource& source,
                                                const SoundDevices& devices);

  private:
    class Keeper;
    std::shared_ptr<Keeper> keeper_;
};

} // namespace tessarune
