#pragma once

#include "Tessarune/app/Application.h"
#include "Tessarune/audio/PermissionsManager.h"
#include "Tessarune/audio/SoundServer.h"
#include "Tessarune/session/LiveSessionTranslation.h"
#include "Tessarune/session/LiveTranscriptStore.h"

#include <memory>

namespace tessarune {

/// The store of a listening session with everything that it needs: recogniser, recorder,
/// translation and permissions, over one sound server. One for the life of a front end's sound.
///
/// A change of the translation's settings takes effect in it, wherever it was made; those of
/// recogniser and diagnostics do so in the store.
///
/// Main queue; application and server outlive it.
class ListeningSession {
  public:
    struct Options {
        SessionDiagnostics diagnostics;
        /// The sound is a file's or a private server's: what is learned of permissions there says
        /// nothing about the desktop and is forgotten.
        bool forgetsPermissions = false;
    };
    ListeningSession(Application& application, SoundServer& sound, Options options);
    ~ListeningSession();
    ListeningSession(const ListeningSession&) = delete;
    ListeningSession& operator=(const ListeningSession&) = delete;

    LiveTranscriptStore& store() { return *store_; }
    const LiveTranscriptStore& store() const { return *store_; }
    LiveTranscriptTranslation& translation() { return translation_->translation(); }

  private:
    AppSettings& settings_;
    OverridingUserDefaults permissionDefaults_;
    std::unique_ptr<PermissionsManager> permissions_;
    SpeechEngine engine_; // outlives what the store still has running in it
    std::unique_ptr<LiveSessionTranslation> translation_;
    std::shared_ptr<LiveTranscriptStore> store_;
    Published<std::string>::Token targetObserver_ = 0;
    Published<std::string>::Token backendObserver_ = 0;
};

} // namespace tessarune
