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
/// codecs, and a recogniser that repeats the log of an hour. Everything happens on the caller's
/// thread, so the cost of a step is the time that passes while it runs.
class LongSession {
  public:
    /// Creates the diagnostics of the session from its parts.
    using MakeDiagnostics = std::function<std::shared_ptr<SessionDiagnostics>(
        Host& host, FileSystem& files, const TessarunePaths& paths, AppSettings& settings,
        TessaruneFileLogger& logger, RecordingCatalog& catalog)>;

    /// The session listens to `sound` for at most `seconds`. If `makesM4A` is false, the session
    /// keeps the WAV that it recorded. With `makeDiagnostics`, `steps` stays empty.
    LongSession(std::filesystem::path sound, double seconds, bool makesM4A,
                const MakeDiagnostics& makeDiagnostics = nullptr);
    ~LongSession();

    /// Starts to listen. Throws if that fails.
    void start();
    /// Continues until `seconds` of the session have passed.
    void runUntil(double seconds);
    /// Stops and continues until the session is saved. Throws if it was not saved.
    void stop();

    /// The size of the captions so far, in bytes.
    struct Kept {
        std::size_t text = 0;  ///< only the characters
        std::size_t total = 0; ///< with all data of each row and each word
        std::size_t words = 0; ///< the number of words
    };
    Kept kept() const;

    /// The duration of a step of the stop, including its inner steps.
    struct Step {
        std::string name;
        double wall = 0;      ///< seconds
        double processor = 0; ///< seconds
    };
    const std::vector<Step>& steps() const { return steps_; }
    /// The folders with the files of the session.
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
    std::vector<Step> begun_; ///< running steps, with the clocks at their start
};

} // namespace tessarune
