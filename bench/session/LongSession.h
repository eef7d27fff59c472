#pragma once

#include "Tessarune/history/AudioExporter.h"
#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/file-sound/FileSoundServer.h"
#include "Tessarune/session/LiveTranscriptStore.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "TessaruneCore/recognition/ASREventRecord.h"
#include "tests/simulation/ScriptedAssetInventory.h"
#include "tests/simulation/ScriptedSpeechEngine.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tessarune {

/// A session of any length on simulated time: real sound, store, recorder, journal, disk and
/// codecs, and a recogniser that says what an hour's log says, again and again. Everything happens
/// on the caller's thread, so what a step costs is the time that passes while it runs.
class LongSession {
  public:
    /// Makes who watches the session, from what the session has.
    using MakeDiagnostics = std::function<std::shared_ptr<SessionDiagnostics>(
        Host& host, FileSystem& files, const TessarunePaths& paths, AppSettings& settings,
        TessaruneFileLogger& logger, RecordingCatalog& catalog)>;

    /// The session lasts for at most `seconds` and listens to `sound` until then. Without an M4A
    /// it leaves the WAV that it recorded. Only where nobody else watches it, `steps` are known.
    LongSession(std::filesystem::path sound, double seconds, bool makesM4A,
                const MakeDiagnostics& makeDiagnostics = nullptr);
    ~LongSession();

    /// Begins to listen. Throws if that fails.
    void start();
    /// Goes on until so many seconds of the session have passed.
    void runUntil(double seconds);
    /// Until the session is saved. Throws if anything was lost.
    void stop();

    /// Bytes that the captions so far are made of.
    struct Kept {
        std::size_t text = 0;  ///< the characters alone
        std::size_t whole = 0; ///< with all that is known of each row and each word
        std::size_t words = 0; ///< how many
    };
    Kept kept() const;

    /// What a step of the stop took, inner ones included.
    struct Step {
        std::string name;
        double wall = 0;      ///< seconds
        double processor = 0; ///< seconds
    };
    const std::vector<Step>& steps() const { return steps_; }
    /// With what it leaves on the disk.
    const TessarunePaths& paths() const { return paths_; }
    FileSystem& files() { return files_; }

  private:
    void makeStore(const MakeDiagnostics& makeDiagnostics);
    void say(const ASREventRecord& record);
    void noteStep(const SessionDiagnostics::LifecycleEntry& entry);

    testing::TemporaryFolder folder_;
    SimulatedHost host_;
    PosixFileSystem files_;
    TessarunePaths paths_;
    TessaruneFileLogger logger_;
    testing::MemoryUserDefaults defaults_;
    AppSettings settings_;
    NotificationCenter notifications_;
    RecordingCatalog catalog_;
    AudioExporter exporter_;
    RecordingAudioCompressor compressor_;
    simulation::ScriptedSpeechEngine engine_;
    simulation::ScriptedAssetInventory assets_;
    FileSoundServer server_;
    PermissionsManager permissions_;
    std::shared_ptr<LiveTranscriptStore> store_;

    const std::vector<ASREventRecord> hour_;
    std::size_t said_ = 0;
    double startedAt_ = 0;
    std::vector<Step> steps_;
    std::vector<Step> begun_; ///< the clocks when they began
};

} // namespace tessarune
