#include "Tessarune/audio/SystemAuthorization.h"

#include "Tessarune/audio/CaptureStream.h"

#include <memory>
#include <utility>

namespace tessarune {

namespace {

Task<bool> granted() {
    co_return true;
}

Task<bool> tryMicrophone(Host& host, SoundServer& server, AudioSource source,
                         std::shared_ptr<SystemAuthorization::Status> answer) {
    *answer = SystemAuthorization::Status::notDetermined;
    try {
        CaptureStream stream(server, Executor::main(host), std::move(source), {});
        auto starting = stream.start();
        co_await starting;
        *answer = SystemAuthorization::Status::authorized;
    } catch (const SoundServerError& error) {
        if (error.status() == SoundServerError::accessDenied)
            *answer = SystemAuthorization::Status::denied;
    }
    co_return *answer != SystemAuthorization::Status::denied;
}

} // namespace

SystemAuthorization SystemAuthorization::ofServer(Host& host, SoundServer& server) {
    auto microphone =
        std::make_shared<SystemAuthorization::Status>(SystemAuthorization::Status::notDetermined);
    return {
        .speechStatus = [] { return SystemAuthorization::Status::authorized; },
        .requestSpeech = [] { return granted(); },
        .microphoneStatus = [microphone] { return *microphone; },
        .requestMicrophone =
            [&host, &server, microphone](AudioSource source) {
                return tryMicrophone(host, server, std::move(source), microphone);
            },
    };
}

} // namespace tessarune
