#pragma once

#include "Tessarune/audio/AudioBuffer.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace tessarune {

/// Thrown if the sound server refuses or fails. `status` is the server's error number; the numbers
/// that the program distinguishes have names here.
class SoundServerError : public std::runtime_error {
  public:
    static constexpr int accessDenied = 1;
    static constexpr int noSuchDevice = 5;
    static constexpr int connectionRefused = 6;
    static constexpr int timeout = 8;
    static constexpr int connectionTerminated = 11;
    static constexpr int streamKilled = 12;

    SoundServerError(int status, const std::string& text)
        : std::runtime_error(text), status_(status) {}
    int status() const { return status_; }

  private:
    int status_;
};

/// A microphone or another input device. Monitors of outputs are not included.
struct SoundInput {
    std::string id; ///< the server's own name for the source; stable across restarts
    std::string name;
    AudioFormat format; ///< the device's own format

    bool operator==(const SoundInput&) const = default;
};

struct SoundOutput {
    std::string id;
    std::string name;
    std::string monitorID; ///< the source that delivers this output's sound; empty without one
    AudioFormat format;

    bool operator==(const SoundOutput&) const = default;
};

/// The server's devices at one moment. The defaults are empty if the server has none.
struct SoundDevices {
    std::vector<SoundInput> inputs;
    std::vector<SoundOutput> outputs;
    std::string defaultInputID;
    std::string defaultOutputID;

    /// Null if there is no such device, or if the default input is the monitor of an output.
    const SoundInput* defaultInput() const { return find(inputs, defaultInputID); }
    const SoundOutput* defaultOutput() const { return find(outputs, defaultOutputID); }
    const SoundInput* input(const std::string& id) const { return find(inputs, id); }

    bool operator==(const SoundDevices&) const = default;

  private:
    template <typename Device>
    static const Device* find(const std::vector<Device>& devices, const std::string& id) {
        for (const auto& device : devices) {
            if (device.id == id)
                return &device;
        }
        return nullptr;
    }
};

enum class SoundServerState {
    disconnected, ///< no attempt is running; the next one may be scheduled
    connecting,
    connected,
};

struct RecordRequest {
    std::string sourceID;      ///< an input's id or an output's `monitorID`
    int channels = 0;          ///< 0: the source's number; the rate is always the source's
    std::string name;          ///< shown by the desktop's mixer
    double timeoutSeconds = 5; ///< how long the server may take to open the stream
};

/// Receives the events of a record stream, on the executor that was passed at opening.
struct RecordHandlers {
    /// About 10 ms of sound, in order and without gaps: silence replaces missing data.
    std::function<void(AudioBufferPtr)> onBuffer;
    /// Called when the stream has ended by itself: the device went away, or the server closed the
    /// stream or the connection. At most once, as the last call.
    std::function<void(SoundServerError)> onEnd;
};

/// An open stream of sound from one source; it never moves to another source. The destructor closes
/// the stream. After a destruction on the stream's executor, no handler runs; after a destruction
/// elsewhere, a running handler may still finish.
class RecordStream {
  public:
    virtual ~RecordStream() = default;
    virtual AudioFormat format() const = 0;
    /// Whether sound normally arrives without pauses, so that a pause indicates a problem.
    virtual bool isContinuous() const { return true; }
};

struct PlaybackRequest {
    std::string outputID; ///< empty for the default output
    AudioFormat format;   ///< the format that will be written; the server converts
    std::string name;
};

/// An open stream of sound to an output. Use it only on the executor that was passed at opening,
/// with one task at a time. Tasks resume there and throw SoundServerError once the stream has
/// ended. The destructor closes the stream and discards the sound that was not heard yet.
class PlaybackStream {
  public:
    virtual ~PlaybackStream() = default;

    /// Resumes as soon as the server has accepted the whole buffer, a few tenths of a second before
    /// it is heard. A stream without data is silent until the next buffer.
    virtual Task<void> write(AudioBufferPtr buffer) = 0;
    /// Resumes when everything written has been heard.
    virtual Task<void> drain() = 0;
    /// A paused stream accepts a few tenths of a second of sound and then makes `write` wait.
    virtual void setPaused(bool paused) = 0;
    /// Discards the sound that was written but not heard yet; a running task ends. A few hundredths
    /// of a second in the output itself may still be heard.
    virtual void flush() = 0;
    /// The seconds heard since the stream was opened or flushed. Keeps its last value after the
    /// stream has ended.
    virtual double heardSeconds() const = 0;
};

/// Interface: the sound server of this desktop.
///
/// All operations may be called from any thread. The object must outlive its streams. Tasks resume
/// on the executor in their parameters and throw SoundServerError. The tasks of a server that plays
/// a file also throw MediaFileError.
class SoundServer {
  public:
    using Subscription = std::shared_ptr<void>;

    virtual ~SoundServer() = default;

    /// Connects once, and resumes when `devices` is known. After the first success, the connection
    /// is kept for the life of the object: if the server goes away, the object tries to reconnect,
    /// a few times a second at first and every two seconds later.
    virtual Task<void> connect(Executor resumeOn) = 0;
    virtual SoundServerState state() const = 0;

    /// The latest reported devices; empty without a connection.
    virtual SoundDevices devices() const = 0;

    /// Calls `onChange` on `executor` after `state` or `devices` have changed, perhaps once for
    /// several changes, until the subscription is dropped. If it is dropped on the executor, no
    /// call follows.
    [[nodiscard]] virtual Subscription observe(Executor executor,
                                               std::function<void()> onChange) = 0;

    /// Opens a stream that delivers at once. Fails if there is no connection; does not wait for
    /// one.
    virtual Task<std::unique_ptr<RecordStream>>
    openRecordStream(RecordRequest request, RecordHandlers handlers, Executor executor) = 0;

    virtual Task<std::unique_ptr<PlaybackStream>> openPlaybackStream(PlaybackRequest request,
                                                                     Executor executor) = 0;
};

} // namespace tessarune
