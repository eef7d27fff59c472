#pragma once

#include "Tessarune/app/Application.h"
#include "Tessarune/audio/PermissionsManager.h"
#include "Tessarune/audio/SoundServer.h"
#include "Tessarune/diagnostics/IdleMemorySentinel.h"
#include "Tessarune/session/LiveTranscriptStore.h"
#include "Tessarune/translation/LiveTranscriptTranslation.h"
#include "TessaruneCore/host/Task.h"

#include <functional>
#include <memory>
#include <optional>

namespace tessarune {

/// The store of listening sessions with all its dependencies: recogniser, recorder, translation
/// and permissions, over one sound server. It runs one session after the other; a front end keeps
/// it as long as the sound server.
///
/// Refinements are paused while a session starts, listens or is being saved.
///
/// The store observes the settings, so that a change from anywhere takes effect.
///
/// Main queue; application and server must outlive it.
class ListeningSession {
  public:
    struct Options {
        /// Receives each recognition event, in addition to the session's diagnostics run.
        std::function<void(const ASREvent&, double t)> onASREvent = {};
        bool forgetsPermissions = false; ///< see `setForgetsPermissions`
        /// Handles the request to refine a saved session; by default the refinement runs in the
        /// background.
        std::function<void(const std::optional<HistoryRefinementRequest>&)>
            scheduleHistoryRefinement = nullptr;
        /// Whether sessions may be recorded; the settings decide whether they are.
        bool isRecorded = true;
        /// Lists the program's windows, for the alarms of the memory watch between two sessions.
        IdleMemorySentinel::Windows windows = nullptr;
        PermissionsManager::OpenSettings openSettings = nullptr;
    };
    ListeningSession(Application& application, SoundServer& sound, Options options);
    ~ListeningSession();
    ListeningSession(const ListeningSession&) = delete;

    LiveTranscriptStore& store() { return *store_; }
    /// Starts a session. Returns true once it listens; false if the start failed
    /// (`view().startFailure`), if the session was stopped before it listened, or if the previous
    /// session is still being saved.
    Task<bool> listen(AudioSource source);
    /// Ends the session and resumes when it is saved; at once if there is none.
    Task<void> stop();

    /// With `forgets`, permissions are neither read from the settings nor stored there. This is for
    /// sound from a file or a private server, whose permissions say nothing about those of the
    /// desktop. Call between two sessions.
    void setForgetsPermissions(bool forgets);

    /// Opens the desktop's page for a permission.
    void openSettings(PermissionsManager::Key kind) const { permissions_->openSettings(kind); }

    /// Whether the open diagnostics run keeps texts.
    bool keepsTexts() const { return diagnostics_->capturesFullDiagnostics(); }
    /// Writes an event of the scrolling caption list to the diagnostics run, if one is open.
    void recordCaptionFollow(const std::string& event, const LogFields& fields) {
        diagnostics_->recordCaptionFollow(event, fields);
    }

    /// Whether the diagnostics run of a session that has ended is still being written.
    bool isWritingDiagnostics() const { return diagnostics_->isWriting(); }

    LiveTranscriptTranslation& translation() { return *translation_; }
    const std::shared_ptr<LiveTranscriptTranslation>& sharedTranslation() { return translation_; }

  private:
    Application& application_;
    Host& host_;
    OverridingUserDefaults permissionDefaults_;
    std::unique_ptr<PermissionsManager> permissions_;
    SpeechEngine engine_; // outlives the tasks that the store still runs in it
    std::shared_ptr<LiveTranscriptTranslation> translation_;
    std::shared_ptr<SessionDiagnostics> diagnostics_;
    std::shared_ptr<LiveTranscriptStore> store_;
    Published<LiveSessionPhase>::Token phaseObserver_;
};

} // namespace tessarune
