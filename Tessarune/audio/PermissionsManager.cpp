#include "Tessarune/audio/PermissionsManager.h"

#include "Tessarune/audio/CaptureStream.h"

#include <exception>
#include <optional>
#include <string>
#include <utility>

namespace tessarune {

namespace {

using Status = PermissionsManager::Status;
using Key = PermissionsManager::Key;

Status stored(const UserDefaults& defaults, Key key) {
    const std::optional<SettingValue> value = defaults.value(storageName(key));
    const std::string* text = value ? std::get_if<std::string>(&*value) : nullptr;
    for (const Status status : {Status::granted, Status::denied}) {
        if (text && *text == storageName(status))
            return status;
    }
    return Status::unknown;
}

Status status(SystemAuthorization::Status system) {
    switch (system) {
    case SystemAuthorization::Status::authorized:
        return Status::granted;
    case SystemAuthorization::Status::denied:
    case SystemAuthorization::Status::restricted:
        return Status::denied;
    case SystemAuthorization::Status::notDetermined:
        break;
    }
    return Status::unknown;
}

Task<void> askForSpeech(PermissionsManager& manager, std::weak_ptr<bool> alive) {
    if (alive.expired())
        co_return;
    auto asking = manager.requestSpeech();
    co_await asking;
}

namespace SystemAudioPermissionProber {

/// Listens to the default output for `timeout` seconds, independent of any running capture. Returns
/// `granted` if anything arrived, `denied` if nothing did, and `unknown` if no stream could be
/// opened.
Task<Status> run(Host& host, SoundServer& server, double timeout) {
    const Executor main = Executor::main(host);
    auto gotAudio = std::make_shared<bool>(false);
    RecordHandlers handlers;
    handlers.onBuffer = [gotAudio](AudioBufferPtr buffer) {
        *gotAudio = *gotAudio || !buffer->samples.empty();
    };
    try {
        co_await server.connect(main);
        const auto tap = CaptureStream::resolve(AudioSource::systemAudio(), server.devices());
        if (!tap)
            co_return Status::unknown;
        RecordRequest request{tap->id, 1, "Tessarune Permission Probe", timeout};
        auto opening = server.openRecordStream(std::move(request), std::move(handlers), main);
        const std::unique_ptr<RecordStream> stream = co_await opening;
        co_await sleep(main, timeout);
    } catch (const std::exception&) {
        co_return Status::unknown;
    }
    co_return *gotAudio ? Status::granted : Status::denied;
}

} // namespace SystemAudioPermissionProber

} // namespace

PermissionsManager::PermissionsManager(Host& host, SoundServer& server, UserDefaults& defaults,
                                       SystemAuthorization system, OpenSettings openSettings)
    : systemAudio(stored(defaults, Key::systemAudioStatus)),
      speech(stored(defaults, Key::speechStatus)),
      microphone(stored(defaults, Key::microphoneStatus)),
      host_(host),
      server_(server),
      defaults_(defaults),
      system_(std::move(system)),
      openSettings_(std::move(openSettings)) {}

PermissionsManager::~PermissionsManager() = default;

Published<Status>& PermissionsManager::published(Key key) {
    switch (key) {
    case Key::speechStatus:
        return speech;
    case Key::microphoneStatus:
        return microphone;
    case Key::systemAudioStatus:
        break;
    }
    return systemAudio;
}

void PermissionsManager::latch(Key key, Status value) {
    Published<Status>& current = published(key);
    if (*current == value)
        return;
    current = value;
    defaults_.set(storageName(key), std::string(storageName(value)));
}

void PermissionsManager::merge(Key key, Status system) {
    if (system != Status::unknown)
        latch(key, system);
}

void PermissionsManager::refresh() {
    merge(Key::speechStatus, status(system_.speechStatus()));
    merge(Key::microphoneStatus, status(system_.microphoneStatus()));
}

void PermissionsManager::bootstrap() {
    if (*speech != Status::unknown || std::exchange(didAskForSpeech_, true))
        return;
    spawn(Executor::main(host_), askForSpeech(*this, alive_));
}

Task<bool> PermissionsManager::requestSpeech() {
    const std::weak_ptr<bool> alive = alive_;
    auto asking = system_.requestSpeech();
    const bool answer = co_await asking;
    if (!alive.expired())
        latch(Key::speechStatus, answer ? Status::granted : Status::denied);
    co_return answer;
}

Task<bool> PermissionsManager::requestMicrophone(AudioSource source) {
    const std::weak_ptr<bool> alive = alive_;
    auto asking = system_.requestMicrophone(std::move(source));
    const bool answer = co_await asking;
    if (!alive.expired())
        latch(Key::microphoneStatus, answer ? Status::granted : Status::denied);
    co_return answer;
}

Task<void> PermissionsManager::deepProbeSystemAudio(double timeout) {
    const std::weak_ptr<bool> alive = alive_;
    auto probing = SystemAudioPermissionProber::run(host_, server_, timeout);
    const Status answer = co_await probing;
    if (!alive.expired())
        latch(Key::systemAudioStatus, answer);
}

void PermissionsManager::openSettings(Key key) const {
    if (openSettings_)
        openSettings_(key);
}

std::string_view storageName(PermissionsManager::Status status) {
    switch (status) {
    case Status::granted:
        return "granted";
    case Status::denied:
        return "denied";
    case Status::unknown:
        break;
    }
    return "unknown";
}

std::string_view storageName(PermissionsManager::Key key) {
    switch (key) {
    case Key::speechStatus:
        return "speechStatus";
    case Key::microphoneStatus:
        return "microphoneStatus";
    case Key::systemAudioStatus:
        break;
    }
    return "systemAudioStatus";
}

} // namespace tessarune
