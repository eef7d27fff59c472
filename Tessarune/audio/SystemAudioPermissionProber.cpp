#include "Tessarune/audio/SystemAudioPermissionProber.h"

#include "Tessarune/audio/CaptureStream.h"

namespace tessarune::SystemAudioPermissionProber {

Task<PermissionsManager::Status> run(Host& host, SoundServer& server, double timeout) {
    const Executor main = Executor::main(host);
    auto gotAudio = std::make_shared<bool>(false);
    RecordHandlers handlers;
    handlers.onBuffer = [gotAudio](AudioBufferPtr buffer) {
        *gotAudio = *gotAudio || !buffer->samples.empty();
    };
    try {
        auto connecting = server.connect(main);
        co_await connecting;
        const auto tap = CaptureStream::resolve(AudioSource::systemAudio(), server.devices());
        if (!tap)
            co_return PermissionsManager::Status::unknown;
        RecordRequest request{tap->id, 1, "Tessarune Permission Probe", timeout};
        auto opening = server.openRecordStream(std::move(request), std::move(handlers), main);
        const std::unique_ptr<RecordStream> stream = co_await opening;
        auto listening = sleep(main, timeout);
        co_await listening;
    } catch (const SoundServerError&) {
        co_return PermissionsManager::Status::unknown;
    }
    co_return *gotAudio ? PermissionsManager::Status::granted : PermissionsManager::Status::denied;
}

} // namespace tessarune::SystemAudioPermissionProber
