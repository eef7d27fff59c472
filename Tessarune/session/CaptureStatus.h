#pragma once

#include "Tessarune/audio/CaptureStream.h"
#include "Tessarune/audio/PermissionsManager.h"
#include "Tessarune/session/SessionLog.h"
#include "Tessarune/session/SessionView.h"

#include <functional>
#include <string>

namespace tessarune {

/// What the status line of a session says about its sound: that it is silent, interrupted, or comes
/// from another device. Main queue; all references must outlive it.
class CaptureStatus {
  public:
    using Refresh = std::function<void(const std::string& reason)>;

    CaptureStatus(SessionView& view, PermissionsManager& permissions, SessionLog& log,
                  Refresh refresh)
        : view_(view), permissions_(permissions), log_(log), refresh_(std::move(refresh)) {}

    /// A new session begins.
    void reset() { isInterrupted_ = false; }
    void handleSoundHeard();
    void handleSystemAudioSilent();
    void handle(const CaptureEvent& event);
    /// Words have arrived: whatever the line says is over, unless the sound is interrupted. The
    /// last words before an interruption arrive after the news of it.
    void handleCaptionActivity();

  private:
    SessionView& view_;
    PermissionsManager& permissions_;
    SessionLog& log_;
    const Refresh refresh_;
    bool isInterrupted_ = false;
};

} // namespace tessarune
