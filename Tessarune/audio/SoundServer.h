#pragma once

#include "Tessarune/audio/AudioBuffer.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace tessarune {

/// The sound server refused or failed. `status` is the server's own number; those that the program
/// itself tells apart have a name here.
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

/// A microphone or another device that gives sound. The monitors of outputs are not among these.
struct SoundInput {
    std::string id; ///< the server's own name for the source; stable over restarts
    std::string name;
    AudioFormat format; ///< what the device runs at

    bool operator==(const SoundInput&) const = default;
};

struct SoundOutput {
    std::string id;
    std::string name;
    std::string monitorID; ///< the source that gives what this output plays; empty without one
    AudioFormat format;

    bool operator==(const SoundOutput&) const = default;
};

/// What the server has to offer at one moment. The defaults are empty if the server names none.
struct SoundDevices {
    std::vector<SoundInput> inputs;
    std::vector<SoundOutput> outputs;
    std::string defaultInputID;
    std::string defaultOutputID;

    /// The default input, or nothing if there is none or it is the monitor of an output.
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
    disconnected, ///< no attempt is running, or the next one waits for its time
    connecting,
    connected,
};

struct RecordRequest {
    std::string sourceID; ///< an input's id or an output's `monitorID`
    int channels = 0;     ///< 0 for the source's own; the sample rate is always the source's own
    std::string name;     ///< what the desktop's mixer shows
    double timeoutSeconds = 5; ///< how long the server may take to open it
};

/// What a record stream tells. Called on the executor that was given when it was opened.
struct RecordHandlers {
    /// About 10 ms of sound, in order, without holes: where the server had nothing there is
    /// silence.
    std::function<void(AudioBufferPtr)> onBuffer;
    /// The stream is over, by itself: the device went away, the server closed the stream or the
    /// connection. Called at most once, and nothing after it.
    std::function<void(SoundServerError)> onEnd;
};

/// An open stream of sound from one source; it stays on that source and never moves to another one
/// by itself. Dropping it closes it. If that is done on the stream's executor, no handler runs
/// afterwards; elsewhere, one that is running may still finish.
class RecordStream {
  public:
    virtual ~RecordStream() = default;
    virtual AudioFormat format() const = 0;
    /// Whether sound comes without a pause as long as all is well, so that a pause means trouble.
    virtual bool isContinuous() const { return true; }
};

struct PlaybackRequest {
    std::string outputID; ///< empty for the default output
    AudioFormat format;   ///< what will be written; the server converts
    std::string name;
};

/// An open stream of sound to an output. Used by one executor, the one that was given when it was
/// opened; its tasks go on there and throw SoundServerError once the stream is over. One task at a
/// time. Dropping the stream closes it, and what was not heard yet is lost.
class PlaybackStream {
  public:
    virtual ~PlaybackStream() = default;

    /// Goes on as soon as the server has taken the whole buffer, which is some tenths of a second
    /// before it is heard. A stream without sound falls silent, and goes on with the next buffer.
    virtual Task<void> write(AudioBufferPtr buffer) = 0;
    /// Goes on when everything written has been heard.
    virtual Task<void> drain() = 0;
    /// A paused stream takes some tenths of a second of sound and then makes writes wait.
    virtual void setPaused(bool paused) = 0;
    /// Forgets what was written and not heard yet; a task that is under way ends. What the output
    /// itself holds, some hundredths of a second, may still be heard.
    virtual void flush() = 0;
    /// How much is heard of what was written since the stream was opened or flushed. Seconds; what
    /// it was at the end, after the stream is over.
    virtual double heardSeconds() const = 0;
};

/// Seam: the sound server of this desktop.
///
/// All operations may be called from any thread. The object must outlive its streams. Tasks go on
/// on the executor that they are given and throw SoundServerError.
class SoundServer {
  public:
    using Subscription = std::shared_ptr<void>;

    virtual ~SoundServer() = default;

    /// Connects if that has not been done yet, and returns once `devices` is known. After the first
    /// success the connection is kept for the life of the object: if the server goes away it is
    /// tried again and again, a few times a second at first and every two seconds at the most.
    virtual Task<void> connect(Executor resumeOn) = 0;
    virtual SoundServerState state() const = 0;

    /// The devices as last heard; empty while there is no connection.
    virtual SoundDevices devices() const = 0;

    /// Calls `onChange` on `executor` after `state` or `devices` have changed, several changes
    /// perhaps together, until the subscription is dropped. If that is done on the executor, it is
    /// not called afterwards.
    [[nodiscard]] virtual Subscription observe(Executor executor,
                                               std::function<void()> onChange) = 0;

    /// Opens a stream that begins to deliver at once. Needs a connection, and does not wait for one
    /// that was lost: it fails then.
    virtual Task<std::unique_ptr<RecordStream>>
    openRecordStream(RecordRequest request, RecordHandlers handlers, Executor executor) = 0;

    virtual Task<std::unique_ptr<PlaybackStream>> openPlaybackStream(PlaybackRequest request,
                                                                     Executor executor) = 0;
};

} // namespace tessarune
