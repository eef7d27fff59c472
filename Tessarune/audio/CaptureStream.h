#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/audio/SoundServer.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// What happened to a running capture besides its sound.
struct CaptureEvent {
    enum class Kind {
        interrupted,  ///< no sound comes any more; `status` and `text` say why
        resumed,      ///< the next buffer follows a hole of `gapSeconds`: after an interruption,
                      ///< or where another device took over and its first sound was late
        deviceChanged ///< the capture went over to another device, whose name is `text`
    };
    Kind kind;
    int status = 0; ///< the server's error number
    std::string text;
    double gapSeconds = 0;

    bool operator==(const CaptureEvent&) const = default;
};

/// Keeps one capture alive through whatever happens to devices and the server.
///
/// System audio and the default microphone follow the default as it changes. A chosen microphone
/// that goes away is replaced by the default one until it is back. Where there is nothing to listen
/// to, or no server, the capture waits for it; an open stream that gives nothing for
/// `stallSeconds` is opened anew. The old stream delivers until the new one is open, so that a
/// change of the device costs no sound that is still to be had.
///
/// Everything happens on the executor given at construction: operations are called there, handlers
/// run there. After `stop` no handler runs. Dropping it stops it. The server must outlive it.
class CaptureStream {
  public:
    struct Handlers {
        std::function<void(AudioBufferPtr)> onBuffer;
        std::function<void(const CaptureEvent&)> onEvent;
    };
    /// A source as the server has it at this moment.
    struct Source {
        std::string id;
        std::string deviceName;
        AudioFormat format; ///< as the stream will deliver it
    };

    /// Longer than the two seconds for which an idle output may sleep.
    static constexpr double stallSeconds = 2.5;
    /// Less is left out where one device takes over from another one that still gave sound.
    static constexpr double smallestHoleSeconds = 0.25;
    /// A server that is just moving things around may never answer one request and the next one at
    /// once, while a slow device needs its time: so the patience grows.
    static constexpr double shortestOpenSeconds = 1.0;
    static constexpr double longestOpenSeconds = 5.0;
    static constexpr double shortestRetrySeconds = 0.25;
    static constexpr double longestRetrySeconds = 2.0;

    CaptureStream(SoundServer& server, Executor executor, AudioSource source, Handlers handlers);
    ~CaptureStream();
    CaptureStream(const CaptureStream&) = delete;
    CaptureStream& operator=(const CaptureStream&) = delete;

    /// Opens the source, which must be there now; from then on the capture goes on until `stop`.
    /// Throws SoundServerError, and then nothing goes on. If `stop` comes first it throws
    /// `streamKilled`.
    Task<void> start();
    void stop();

    /// What `source` means with these devices: nothing if it is not there and nothing can replace
    /// it. System audio is one channel, mixed by the server.
    static std::optional<Source> resolve(const AudioSource& source, const SoundDevices& devices);
    /// As `resolve`, but a chosen microphone must be there itself.
    static std::optional<Source> resolveExactly(const AudioSource& source,
                                                const SoundDevices& devices);

  private:
    class Keeper;
    std::shared_ptr<Keeper> keeper_;
};

} // namespace tessarune
