#pragma once

#include "Tessarune/audio/SoundServer.h"
#include "TessaruneCore/host/SimulatedHost.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tessarune::testing {

/// A sound server in simulated time: the test says what devices there are, when sound comes and
/// what fails, and sees which streams are open.
class ScriptedSoundServer final : public SoundServer {
  public:
    explicit ScriptedSoundServer(SimulatedHost& host) : host_(host) {}

    // The script. A failure persists until it is reset.

    std::optional<SoundServerError> connectFailure;
    std::optional<SoundServerError> openFailure;
    double connectDelay = 0;
    double openDelay = 0;

    static SoundOutput output(const std::string& id, double sampleRate = 48000) {
        return {id, "Output " + id, id + ".monitor", {sampleRate, 2}};
    }
    static SoundInput input(const std::string& id, AudioFormat format = {44100, 2}) {
        return {id, "Input " + id, format};
    }

    /// Replaces the devices. A stream whose source is gone ends.
    void setDevices(SoundDevices devices) {
        offered_ = std::move(devices);
        for (const auto& line : lines()) {
            if (!has(line->sourceID))
                end(line, SoundServerError(SoundServerError::streamKilled, "killed"));
        }
        notify();
    }

    void goDown() {
        state_ = SoundServerState::disconnected;
        for (const auto& line : lines())
            end(line, SoundServerError(SoundServerError::connectionTerminated, "terminated"));
        for (const auto& weak : std::exchange(speakers_, {})) {
            if (const auto speaker = weak.lock())
                speaker->end({SoundServerError::connectionTerminated, "terminated"});
        }
        notify();
    }
    /// Restores the connection, as after a restart of the server.
    void comeBack() {
        state_ = SoundServerState::connected;
        notify();
    }

    /// Delivers one buffer of a constant value to every stream on the source.
    void deliver(const std::string& sourceID, float value, double seconds = 0.01) {
        for (const auto& line : lines()) {
            if (line->sourceID != sourceID)
                continue;
            auto buffer = std::make_shared<AudioBuffer>();
            buffer->format = line->format;
            const auto frames = static_cast<std::size_t>(seconds * line->format.sampleRate + 0.5);
            buffer->samples.assign(frames * static_cast<std::size_t>(line->format.channels), value);
            line->executor.run([line, shared = AudioBufferPtr(buffer)] {
                if (!line->closed && line->handlers.onBuffer)
                    line->handlers.onBuffer(shared);
            });
        }
    }
    /// From now on every open stream gets a buffer of `value` each `blockSeconds`, until the next
    /// call; `nullopt` silences all sources.
    void keepDelivering(std::optional<float> value, double blockSeconds = 0.01) {
        const int round = ++deliveryRound_;
        if (value)
            tick(round, *value, blockSeconds);
    }

    /// Sources of the streams that are open, sorted.
    std::vector<std::string> openSources() const {
        std::vector<std::string> sources;
        for (const auto& line : lines())
            sources.push_back(line->sourceID);
        std::sort(sources.begin(), sources.end());
        return sources;
    }
    std::vector<RecordRequest> requests; ///< all requests, in order
    /// Receives what a playback stream plays at this moment.
    std::function<void(const AudioBuffer&)> heard = [](const AudioBuffer&) {};

    // SoundServer

    Task<void> connect(Executor resumeOn) override { return connectLater(this, resumeOn); }
    SoundServerState state() const override { return state_; }
    SoundDevices devices() const override {
        return state_ == SoundServerState::connected ? offered_ : SoundDevices();
    }
    Subscription observe(Executor executor, std::function<void()> onChange) override {
        auto observer =
            std::make_shared<Observer>(Observer{std::move(executor), std::move(onChange)});
        observers_.push_back(observer);
        return observer;
    }
    Task<std::unique_ptr<RecordStream>>
    openRecordStream(RecordRequest request, RecordHandlers handlers, Executor executor) override {
        return openLater(this, std::move(request), std::move(handlers), std::move(executor));
    }
    Task<std::unique_ptr<PlaybackStream>> openPlaybackStream(PlaybackRequest request,
                                                             Executor executor) override {
        return openPlaybackLater(this, request.format, std::move(executor));
    }

  private:
    struct Observer {
        Executor executor;
        std::function<void()> onChange;
    };
    struct Line {
        std::string sourceID;
        AudioFormat format;
        RecordHandlers handlers;
        Executor executor;
        bool closed = false;
    };
    class Stream final : public RecordStream {
      public:
        explicit Stream(std::shared_ptr<Line> line) : line_(std::move(line)) {}
        ~Stream() override { line_->closed = true; }
        AudioFormat format() const override { return line_->format; }

      private:
        std::shared_ptr<Line> line_;
    };
    /// An output that plays the written sound in simulated time, a few milliseconds at a time.
    struct Speaker : std::enable_shared_from_this<Speaker> {
        static constexpr double tickSeconds = 0.005;
        static constexpr double serverSeconds = 0.2;

        Speaker(ScriptedSoundServer& at, AudioFormat as, Executor where)
            : server(at), format(as), executor(std::move(where)), done(executor) {}

        std::size_t tickSamples() const {
            return static_cast<std::size_t>(tickSeconds * format.sampleRate) *
                   static_cast<std::size_t>(format.channels);
        }
        double waitingSeconds() const {
            return static_cast<double>(waiting.size()) / format.channels / format.sampleRate;
        }
        void wake() {
            if (failure || waitingSeconds() <= serverSeconds)
                done.resume(true);
        }
        void tick() {
            isTicking = !failure && !isPaused && !waiting.empty();
            if (!isTicking)
                return;
            server.host_.after(tickSeconds, [self = shared_from_this()] {
                const std::size_t count = std::min(self->tickSamples(), self->waiting.size());
                if (!self->failure && !self->isPaused && count > 0) {
                    std::vector<float>& all = self->waiting;
                    const auto end = all.begin() + static_cast<std::ptrdiff_t>(count);
                    self->heard += static_cast<double>(count) / self->format.channels /
                                   self->format.sampleRate;
                    self->server.heard({self->format, {all.begin(), end}});
                    all.erase(all.begin(), end);
                    self->wake();
                }
                self->tick();
            });
        }
        void end(const SoundServerError& error) {
            failure = error;
            waiting.clear();
            wake();
        }

        ScriptedSoundServer& server;
        AudioFormat format;
        Executor executor;
        OneShot<bool> done; ///< of the pending write
        std::vector<float> waiting;
        double heard = 0;
        bool isPaused = false;
        bool isTicking = false;
        std::optional<SoundServerError> failure;
    };

    class Playback final : public PlaybackStream {
      public:
        explicit Playback(std::shared_ptr<Speaker> speaker) : speaker_(std::move(speaker)) {}
        ~Playback() override { speaker_->end({SoundServerError::streamKilled, "closed"}); }
        Task<void> write(AudioBufferPtr buffer) override { return writeLater(speaker_, buffer); }
        Task<void> drain() override { return pass(speaker_->executor, speaker_->waitingSeconds()); }
        void setPaused(bool paused) override {
            speaker_->isPaused = paused;
            if (!speaker_->isTicking)
                speaker_->tick();
        }
        void flush() override {
            speaker_->heard = 0;
            speaker_->waiting.clear();
            speaker_->done.resume(true);
        }
        double heardSeconds() const override { return speaker_->heard; }

      private:
        static Task<void> writeLater(std::shared_ptr<Speaker> speaker, AudioBufferPtr buffer) {
            if (speaker->failure)
                throw SoundServerError(*speaker->failure);
            speaker->waiting.insert(speaker->waiting.end(), buffer->samples.begin(),
                                    buffer->samples.end());
            if (!speaker->isTicking)
                speaker->tick();
            speaker->done = OneShot<bool>(speaker->executor);
            speaker->wake();
            co_await speaker->done;
            if (speaker->failure)
                throw SoundServerError(*speaker->failure);
        }
        std::shared_ptr<Speaker> speaker_;
    };

    static Task<void> pass(Executor executor, double seconds) {
        auto waiting = sleep(executor, seconds);
        co_await waiting;
    }
    static Task<void> connectLater(ScriptedSoundServer* self, Executor resumeOn) {
        auto waiting = pass(resumeOn, self->connectDelay);
        co_await waiting;
        if (self->connectFailure)
            throw SoundServerError(*self->connectFailure);
        if (!std::exchange(self->didConnect_, true))
            self->comeBack();
        if (self->state_ != SoundServerState::connected)
            throw SoundServerError(SoundServerError::connectionRefused, "refused");
    }
    static Task<std::unique_ptr<RecordStream>> openLater(ScriptedSoundServer* self,
                                                         RecordRequest request,
                                                         RecordHandlers handlers,
                                                         Executor executor) {
        self->requests.push_back(request);
        auto waiting = pass(executor, std::min(self->openDelay, request.timeoutSeconds));
        co_await waiting;
        if (self->openDelay > request.timeoutSeconds)
            throw SoundServerError(SoundServerError::timeout, "timeout");
        if (self->state_ != SoundServerState::connected)
            throw SoundServerError(SoundServerError::connectionTerminated, "not connected");
        if (self->openFailure)
            throw SoundServerError(*self->openFailure);
        const std::optional<AudioFormat> format = self->formatOf(request.sourceID);
        if (!format)
            throw SoundServerError(SoundServerError::noSuchDevice, "no such source");
        auto line =
            std::make_shared<Line>(Line{request.sourceID, *format, std::move(handlers), executor});
        if (request.channels > 0)
            line->format.channels = request.channels;
        self->lines_.push_back(line);
        co_return std::make_unique<Stream>(line);
    }
    static Task<std::unique_ptr<PlaybackStream>>
    openPlaybackLater(ScriptedSoundServer* self, AudioFormat format, Executor executor) {
        auto waiting = pass(executor, self->openDelay);
        co_await waiting;
        if (self->state_ != SoundServerState::connected)
            throw SoundServerError(SoundServerError::connectionTerminated, "not connected");
        if (self->openFailure)
            throw SoundServerError(*self->openFailure);
        auto speaker = std::make_shared<Speaker>(*self, format, executor);
        self->speakers_.push_back(speaker);
        co_return std::make_unique<Playback>(std::move(speaker));
    }

    std::optional<AudioFormat> formatOf(const std::string& sourceID) const {
        if (const SoundInput* input = offered_.input(sourceID))
            return input->format;
        for (const auto& output : offered_.outputs) {
            if (output.monitorID == sourceID)
                return output.format;
        }
        return std::nullopt;
    }
    bool has(const std::string& sourceID) const { return formatOf(sourceID).has_value(); }

    std::vector<std::shared_ptr<Line>> lines() const {
        std::vector<std::shared_ptr<Line>> open;
        for (const auto& weak : lines_) {
            auto line = weak.lock();
            if (line && !line->closed)
                open.push_back(std::move(line));
        }
        return open;
    }
    void end(const std::shared_ptr<Line>& line, const SoundServerError& error) {
        line->executor.run([line, error] {
            if (!std::exchange(line->closed, true) && line->handlers.onEnd)
                line->handlers.onEnd(error);
        });
    }
    void notify() {
        for (const auto& weak : observers_) {
            if (auto observer = weak.lock()) {
                observer->executor.run([weak] {
                    if (auto current = weak.lock())
                        current->onChange();
                });
            }
        }
    }
    void tick(int round, float value, double blockSeconds) {
        if (round != deliveryRound_)
            return;
        std::vector<std::string> sources = openSources();
        sources.erase(std::unique(sources.begin(), sources.end()), sources.end());
        for (const auto& source : sources)
            deliver(source, value, blockSeconds);
        host_.after(blockSeconds,
                    [this, round, value, blockSeconds] { tick(round, value, blockSeconds); });
    }

    SimulatedHost& host_;
    SoundServerState state_ = SoundServerState::disconnected;
    bool didConnect_ = false;
    SoundDevices offered_;
    std::vector<std::weak_ptr<Line>> lines_;
    std::vector<std::weak_ptr<Speaker>> speakers_;
    std::vector<std::weak_ptr<Observer>> observers_;
    int deliveryRound_ = 0;
};

} // namespace tessarune::testing
