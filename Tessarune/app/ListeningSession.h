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

/// The store of a listening session with all its dependencies: recogniser, recorder, translation
/// and permissions, over one sound server. One for the life of a front end's sound.
///
/// Refinements are paused while it listens or saves.
///
/// Changes of settings take effect in the store, wherever they were made.
///
/// Main queue; application and server outlive it.
class ListeningSession {
  public:
    struct Options {
        /// Hears each recognition event, beside the diagnostics run of the session.
        std::function<void(const ASREvent&, double t)> onASREvent = {};
        bool forgetsPermissions = false; ///< see `setForgetsPermissions`
        /// Handles the request to refine a saved session; by default it runs in the background.
        std::function<void(const std::optional<HistoryRefinementRequest>&)>
            scheduleHistoryRefinement = nullptr;
        /// Its sessions are recorded if the settings ask for it.
        bool isRecorded = true;
        /// The windows of the program, for an alarm of what watches it between two sessions.
        IdleMemorySentinel::Windows windows = nullptr;
    };
    ListeningSession(Application& application, SoundServer& sound, Options options);
    ~ListeningSession();
    ListeningSession(const ListeningSession&) = delete;

    LiveTranscriptStore& store() { return *store_; }
    const LiveTranscriptStore& store() const { return *store_; }
    /// Begins to listen. Returns true once the session listens, and false if it will not: the start
    /// failed (`view().startFailure`), or a stop overtook it.
    Task<bool> listen(AudioSource source);
    /// Ends the session and resumes when it is saved; at once where there is none.
    Task<void> stop();

    /// The sound comes from a file or a private server: permissions learned there say nothing about
    /// the desktop and are forgotten. Call between two sessions.
    void setForgetsPermissions(bool forgets);

    /// Whether the open diagnostics run keeps texts.
    bool keepsTexts() const { return diagnostics_->capturesFullDiagnostics(); }
    /// How the captions follow what is said, for the diagnostics run if one is open.
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
