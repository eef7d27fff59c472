#pragma once

#include "Tessarune/audio/CaptureStream.h"
#include "Tessarune/audio/PermissionsManager.h"
#include "Tessarune/session/SessionLog.h"
#include "Tessarune/session/SessionView.h"

#include <functional>
#include <string>

namespace tessarune {

/// Shows in the status line of a session that its sound is silent, interrupted or resumed, or comes
/// from another device. Main queue; all references must outlive it.
class CaptureStatus {
  public:
    using Refresh = std::function<void(const std::string& reason)>;

    CaptureStatus(SessionView& view, PermissionsManager& permissions, SessionLog& log,
                  Refresh refresh)
        : view_(view), permissions_(permissions), log_(log), refresh_(std::move(refresh)) {}

    /// Call at the start of a session.
    void reset() { isInterrupted_ = false; }
    void handleSoundHeard();
    void handleSystemAudioSilent();
    void handle(const CaptureEvent& event);
    /// Call when words have arrived. Clears the status line, unless the sound is interrupted: the
    /// last words spoken before an interruption arrive after the event that reports it.
    void handleCaptionActivity();

  private:
    SessionView& view_;
    PermissionsManager& permissions_;
    SessionLog& log_;
    const Refresh refresh_;
    bool isInterrupted_ = false;
};

} // namespace tessarune
