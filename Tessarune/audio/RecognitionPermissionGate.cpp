#include "Tessarune/audio/RecognitionPermissionGate.h"

#include "TessaruneCore/LocalizedError.h"
#include "TessaruneCore/text/Localization.h"

namespace tessarune::RecognitionPermissionGate {

namespace {

LocalizedError refusal(int code) {
    return {
        localized(
            code == microphoneRefused
                ? "未授权「麦克风」。请在系统设置 → 隐私与安全 → 麦克风 中开启 Tessarune。"
                : "未授权「语音识别」。请在系统设置 → 隐私与安全 → 语音识别 中开启 Tessarune。"),
        errorDomain, code};
}

} // namespace

// Every recognition option runs on this computer and needs the same permissions.
Task<void> requestRequiredPermissions(PermissionsManager& permissions, AudioSource source,
                                      std::string /*recognitionOptionID*/) {
    if (source.isMicrophone()) {
        auto asking = permissions.requestMicrophone(source);
        const bool granted = co_await asking;
        if (!granted)
            throw refusal(microphoneRefused);
    }
    switch (permissions.speechAuthorization()) {
    case SystemAuthorization::Status::authorized:
        co_return;
    case SystemAuthorization::Status::notDetermined: {
        auto asking = permissions.requestSpeech();
        const bool granted = co_await asking;
        if (!granted)
            throw refusal(speechRefused);
        co_return;
    }
    case SystemAuthorization::Status::denied:
    case SystemAuthorization::Status::restricted:
        permissions.latch(PermissionsManager::Key::speechStatus,
                          PermissionsManager::Status::denied);
        throw refusal(speechRefused);
    }
}

bool isMicrophoneRefusal(const std::exception_ptr& failure) {
    if (!failure)
        return false;
    try {
        std::rethrow_exception(failure);
    } catch (const LocalizedError& error) {
        return error.domain() == errorDomain && error.code() == microphoneRefused;
    } catch (...) {
        return false;
    }
}

} // namespace tessarune::RecognitionPermissionGate
