#include "Tessarune/session/CaptureStatus.h"

#include "Tessarune/session/SystemAudioSilentStartPolicy.h"

namespace tessarune {

void CaptureStatus::handleSoundHeard() {
    permissions_.latch(PermissionsManager::Key::systemAudioStatus,
                       PermissionsManager::Status::granted);
    if (view_.status->kind != SessionStatus::Kind::silent)
        return;
    view_.status = SessionStatus();
    refresh_("systemAudio.heard");
}

void CaptureStatus::handleSystemAudioSilent() {
    if (!*view_.isListening ||
        !SystemAudioSilentStartPolicy::recordSilentStart(permissions_, *view_.selectedSource))
        return;
    view_.status = SessionStatus{SessionStatus::Kind::silent};
    refresh_("systemAudio.silent");
}

void CaptureStatus::handle(const CaptureEvent& event) {
    if (!*view_.isListening)
        return;
    using Status = SessionStatus::Kind;
    isInterrupted_ = event.kind == CaptureEvent::Kind::interrupted;
    switch (event.kind) {
    case CaptureEvent::Kind::interrupted:
        log_.event("listen.capture.interrupted",
                   {{"status", std::int64_t{event.status}}, {"error", event.text}},
                   Importance::important);
        view_.status = SessionStatus{Status::interrupted};
        refresh_("capture.interrupted");
        break;
    case CaptureEvent::Kind::resumed:
        log_.event("listen.capture.resumed",
                   {{"device", event.text}, {"gapSeconds", event.gapSeconds}},
                   Importance::important);
        if (view_.status->kind == Status::interrupted)
            view_.status = SessionStatus{Status::listeningTo, event.text};
        refresh_("capture.resumed");
        break;
    case CaptureEvent::Kind::deviceChanged:
        log_.event("listen.capture.deviceChanged", {{"device", event.text}}, Importance::important);
        view_.status = SessionStatus{Status::listeningTo, event.text};
        refresh_("capture.deviceChanged");
        break;
    }
}

void CaptureStatus::handleCaptionActivity() {
    const bool isInterrupted = isInterrupted_ && *view_.isListening;
    view_.status =
        SessionStatus{isInterrupted ? SessionStatus::Kind::interrupted : SessionStatus::Kind::none};
}

} // namespace tessarune
