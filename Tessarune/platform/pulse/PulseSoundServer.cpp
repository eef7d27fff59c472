#include "Tessarune/platform/pulse/PulseSoundServer.h"

#include "Tessarune/platform/pulse/PulseConnection.h"
#include "Tessarune/platform/pulse/PulsePlaybackStream.h"
#include "Tessarune/platform/pulse/PulseRecordStream.h"
#include "TessaruneCore/host/Mutex.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tessarune {

/// Owns the observers; dropping a subscription removes its observer. The server's thread must never
/// destroy an observer: this might also destroy the observer's queue, and the thread would then
/// wait for the work in the queue.
class PulseSoundServer::Observers : public std::enable_shared_from_this<Observers> {
  public:
    Subscription add(Executor executor, std::function<void()> onChange) {
        auto observer =
            std::make_shared<Observer>(Observer{std::move(executor), std::move(onChange)});
        const MutexLock lock(mutex_);
        observers_.push_back(observer);
        return {observer.get(),
                [self = shared_from_this()](Observer* gone) { self->remove(gone); }};
    }

    void notify() {
        const MutexLock lock(mutex_);
        for (const auto& observer : observers_) {
            observer->executor.run([weak = std::weak_ptr(observer)] {
                if (auto current = weak.lock())
                    current->onChange();
            });
        }
    }

  private:
    struct Observer {
        Executor executor;
        std::function<void()> onChange;
    };

    void remove(const Observer* gone) {
        std::shared_ptr<Observer> taken; // destroyed after the mutex is released
        const MutexLock lock(mutex_);
        const auto found = std::find_if(observers_.begin(), observers_.end(),
                                        [&](const auto& known) { return known.get() == gone; });
        if (found != observers_.end()) {
            taken = std::move(*found);
            observers_.erase(found);
        }
    }

    Mutex mutex_;
    std::vector<std::shared_ptr<Observer>> observers_ GUARDED_BY(mutex_);
};

namespace {

Task<void> connectOn(std::shared_ptr<PulseConnection> connection, Executor resumeOn) {
    OneShot<PulseOutcome> done(std::move(resumeOn));
    connection->connect(done);
    const PulseOutcome outcome = co_await done;
    outcome.throwIfFailed();
}

Task<std::unique_ptr<RecordStream>> openRecord(std::shared_ptr<PulseConnection> connection,
                                               RecordRequest request, RecordHandlers handlers,
                                               Executor executor) {
    OneShot<PulseOutcome> opened(executor);
    auto stream = std::make_unique<PulseRecordStream>(std::move(connection), std::move(handlers),
                                                      std::move(executor));
    stream->open(request, opened);
    const PulseOutcome outcome = co_await opened;
    outcome.throwIfFailed();
    co_return stream;
}

Task<std::unique_ptr<PlaybackStream>> openPlayback(std::shared_ptr<PulseConnection> connection,
                                                   PlaybackRequest request, Executor executor) {
    OneShot<PulseOutcome> opened(executor);
    auto stream = std::make_unique<PulsePlaybackStream>(std::move(connection), std::move(executor));
    stream->open(request, opened);
    const PulseOutcome outcome = co_await opened;
    outcome.throwIfFailed();
    co_return stream;
}

} // namespace

PulseSoundServer::PulseSoundServer(std::string address)
    : observers_(std::make_shared<Observers>()),
      connection_(std::make_shared<PulseConnection>(
          std::move(address), [observers = observers_] { observers->notify(); })) {}

PulseSoundServer::~PulseSoundServer() = default;

Task<void> PulseSoundServer::connect(Executor resumeOn) {
    return connectOn(connection_, std::move(resumeOn));
}

SoundServerState PulseSoundServer::state() const {
    return connection_->state();
}

SoundDevices PulseSoundServer::devices() const {
    return connection_->devices();
}

SoundServer::Subscription PulseSoundServer::observe(Executor executor,
                                                    std::function<void()> onChange) {
    return observers_->add(std::move(executor), std::move(onChange));
}

Task<std::unique_ptr<RecordStream>> PulseSoundServer::openRecordStream(RecordRequest request,
                                                                       RecordHandlers handlers,
                                                                       Executor executor) {
    return openRecord(connection_, std::move(request), std::move(handlers), std::move(executor));
}

Task<std::unique_ptr<PlaybackStream>> PulseSoundServer::openPlaybackStream(PlaybackRequest request,
                                                                           Executor executor) {
    return openPlayback(connection_, std::move(request), std::move(executor));
}

} // namespace tessarune
