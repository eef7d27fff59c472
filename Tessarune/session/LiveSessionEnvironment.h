#pragma once

#include "Tessarune/audio/AudioSessionRecorder.h"
#include "Tessarune/audio/PermissionsManager.h"
#include "Tessarune/audio/SoundServer.h"
#include "Tessarune/history/DataFolderHold.h"
#include "Tessarune/history/HistoryRefinementRequest.h"
#include "Tessarune/history/RecordingAudioCompressor.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/session/SessionDiagnostics.h"
#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/speech/SpeechPlatform.h"
#include "Tessarune/translation/SessionTranslation.h"
#include "TessaruneCore/observation/NotificationCenter.h"

#include <functional>
#include <memory>
#include <optional>

namespace tessarune {

/// The dependencies of a session. All references outlive the session.
struct LiveSessionEnvironment {
    SpeechPlatform speech;
    SoundServer& sound;
    FileSystem& files;
    AppSettings& settings;
    PermissionsManager& permissions;
    RecordingCatalog& catalog;
    std::shared_ptr<AudioSessionRecorder> recorder;
    /// Called before a session is recorded; returns whether that is allowed. Empty means yes.
    std::function<bool()> mayRecord = {};
    /// Called for each write to a recording after its session has ended. If the returned lease has
    /// no hold, the write is postponed.
    std::function<DataFolderLease()> leaseDataFolder = unsharedDataFolder;
    RecordingAudioCompressor& compressor;
    /// May be null: then nothing is translated.
    std::shared_ptr<SessionTranslation> translation;
    /// May be null.
    std::shared_ptr<SessionDiagnostics> diagnostics;
    /// Called after the transcript is saved, with `nullopt` if it is not to be refined; may be
    /// empty.
    std::function<void(const std::optional<HistoryRefinementRequest>&)> scheduleHistoryRefinement;
    /// Returns free memory to the operating system; any thread.
    std::function<void()> returnMemory;
    /// Notified of each published frame; may be null.
    const NotificationCenter* notifications = nullptr;
};

} // namespace tessarune
