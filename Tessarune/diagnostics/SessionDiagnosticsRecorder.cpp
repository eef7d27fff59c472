#include "Tessarune/diagnostics/SessionDiagnosticsRecorder.h"

#include "Tessarune/diagnostics/DiagnosticsRunLayout.h"
#include "Tessarune/diagnostics/SessionDiagnosticsRun.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/text/DateText.h"

#include <system_error>
#include <utility>

namespace tessarune {

namespace Layout = DiagnosticsRunLayout;

namespace {

/// The maximum number of queued raw results. A raw result has up to 60 kB, so that less than 16 MB
/// are queued while the disk stalls.
constexpr std::size_t rawResultLimit = 256;

} // namespace

SessionDiagnosticsRecorder::SessionDiagnosticsRecorder(Environment environment)
    : environment_(std::move(environment)),
      queue_(environment_.host.serialQueue("Tessarune.SessionDiagnosticsRecorder",
                                           QueuePriority::utility)),
      sentinel_({environment_.host, environment_.files, environment_.logger, environment_.figures,
                 environment_.windows}) {}

SessionDiagnosticsRecorder::~SessionDiagnosticsRecorder() {
    stopWithoutExport();
}

bool SessionDiagnosticsRecorder::isFullDiagnosticsRunning() const {
    return run_ && run_->files.isFullRun();
}

/// Gives each run its own folder, even if several programs start a run in the same second.
std::filesystem::path SessionDiagnosticsRecorder::makeRunDirectory(double wallClock) {
    constexpr int lastNumber = 99;
    constexpr std::size_t idCharacters = 8;
    const std::string name = std::string(Layout::runNamePrefix) +
                             DateText::formatted(wallClock, "yyyy-MM-dd-HH-mm-ss", "en_US_POSIX");
    FileSystem& files = environment_.files;
    const auto folder = environment_.paths.diagnostics();
    files.createDirectories(folder);
    std::filesystem::path directory = folder / name;
    for (int number = 2; !files.makeDirectory(directory); ++number) {
        directory = folder / name;
        directory += "-";
        directory += number <= lastNumber ? std::to_string(number)
                                          : UUID::random().text().substr(0, idCharacters);
    }
    files.createDirectories(directory / "events");
    return directory;
}

DiagnosticsLevel SessionDiagnosticsRecorder::levelOfRun() const {
    const DiagnosticsLevel level = *environment_.settings.diagnosticsLevel;
    const bool mayHoldText =
        !writesSessionDiagnostics(level) || !environment_.mayRecord || environment_.mayRecord();
    return mayHoldText ? level : DiagnosticsLevel::core;
}

void SessionDiagnosticsRecorder::startIfNeeded(const Start& start) {
    closeLifecycle(); // the log of a run that finished earlier in this session
    stopWithoutExport();
    lastFinished_.reset();
    const AppSettings& settings = environment_.settings;
    const DiagnosticsLevel level = levelOfRun();
    if (!writesCoreSessionRun(level))
        return;
    const bool isFull = writesSessionDiagnostics(level);
    const auto selected = ModelCatalog::recognitionOption(*settings.selectedRecognitionOptionID);
    const RecognitionOption option = selected ? *selected : ModelCatalog::recognitionOptions()[0];
    const double startedWall = environment_.host.wallClock();
    std::filesystem::path directory;
    try {
        directory = makeRunDirectory(startedWall);
    } catch (const std::system_error& error) {
        environment_.logger.important("diagnostics.start.failed", {{"error", error.what()}});
        return;
    }
    namespace Context = DiagnosticsRunContext;
    run_ = std::make_shared<Run>(environment_.files, directory, option.id, isFull);
    run_->optionTitle = option.title;
    run_->t0 = environment_.host.now();
    run_->startedWall = startedWall;
    run_->sections = {
        {"diagnosticsSchemaVersion", Layout::schemaVersion},
        {"runMode", "liveSession"},
        {"productComparable", true},
        {"resourceInterference", Context::resourceInterference},
        {"diagnosticsLevel", storageName(level)},
        {"capturesFullDiagnostics", isFull},
        {"app", Context::appSnapshot(environment_.app)},
        {"runtime", Context::runtimeSnapshot()},
        {"internalTools", Context::internalToolsSnapshot()},
        {"capture", Context::captureSnapshot(settings, start.source, start.sourceName,
                                             start.audioInactivityAutoStopConfiguration)},
        {"recognition", Context::recognitionSnapshot(settings)},
        {"translation", Context::translationSnapshot(settings)},
        {"display", Context::displaySnapshot(settings)},
        {"performance", {{"perfSampleIntervalSeconds", *settings.perfSampleIntervalSeconds}}}};
    run_->lifecycle = std::make_unique<DiagnosticsNDJSONWriter>(
        environment_.host, environment_.files, run_->files.path("lifecycleEvents"),
        "Tessarune.RunLifecycleObservationLog.Writer");
    if (isFull)
        openLogs(*run_);
    LogFields fields{
        {"optionID", option.id},
        {"optionTitle", option.title},
        {"audioSource", start.source.logName()},
        {"audioSourceName", start.sourceName},
        {"appleDiagnosticsMode", std::string(name(*settings.appleAnalyzerDiagnosticsMode))},
        {"diagnosticsLevel", std::string(storageName(level))},
        {"capturesFullDiagnostics", isFull}};
    run_->writeLifecycle(run_->t0, "session.start", fields);
    if (auto* captions = log("liveCaptionEvents")) {
        JSON::Value record = Context::displaySnapshotFields(settings);
        record.update({{"t", run_->t0}, {"event", "diagnostics.start"}});
        captions->append(record);
    }
    if (auto* events = log("asrEvents")) {
        writeCaptionSettings(run_->t0);
        // The captions continue from the open text, so a replay must begin with it.
        if (!start.openText.empty())
            events->append([record = captionMarkRecord(CaptionMark::open, run_->t0,
                                                       start.openText)] { return record.line(); });
    }
    write([run = run_, &figures = environment_.figures,
           file = Context::settingsFile(settings, run_->sections, isFull)]() mutable {
        run->host = Context::hostSnapshot(figures);
        file["host"] = run->host;
        run->files.writeJSON("settings", file);
    });
    announce(directory);
    fields.add("runID", run_->id).add("dir", directory.string());
    environment_.logger.important("diagnostics.start.done", fields);
    TessaruneLog::diagnostics.notice(
        [&] { return "Tessarune diagnostics started: " + directory.string(); });
}

void SessionDiagnosticsRecorder::openLogs(Run& run) {
    run.sampler =
        std::make_unique<PerfSampler>(environment_.host, environment_.files, environment_.figures);
    run.sampler->start(run.files, *environment_.settings.perfSampleIntervalSeconds);
    const auto openArtifact = [&](const char* artifact, const char* label) {
        run.logs[artifact] = std::make_unique<DiagnosticsNDJSONWriter>(
            environment_.host, environment_.files, run.files.path(artifact), label);
    };
    openArtifact("asrEvents", "Tessarune.ASREventLog.Writer");
    openArtifact("boundaryEvents", "Tessarune.BoundaryObservationLog.Writer");
    openArtifact("translationEvents", "Tessarune.TranslationObservationLog.Writer");
    openArtifact("corrections", "Tessarune.CorrectionObservationLog.Writer");
    openArtifact("liveCaptionEvents", "Tessarune.LiveCaptionObservationLog.Writer");
    openArtifact("displayUnitEvents", "Tessarune.DisplayUnitObservationLog.Writer");
    openArtifact("appleFinalReconcile", "Tessarune.AppleFinalReconcileLog.Writer");
    const auto mode = *environment_.settings.appleAnalyzerDiagnosticsMode;
    if (mode != AppleAnalyzerDiagnosticsMode::off)
        openArtifact("appleSummaryResults", "Tessarune.AppleSpeechAnalyzerSummaryLog.Writer");
    if (mode == AppleAnalyzerDiagnosticsMode::fullRaw)
        run.logs["appleRawResults"] = std::make_unique<DiagnosticsNDJSONWriter>(
            environment_.host, environment_.files, run.files.path("appleRawResults"),
            "Tessarune.AppleSpeechAnalyzerRawResultLog.Writer", rawResultLimit);
}

/// Runs the block on the recorder's queue, after all earlier ones.
void SessionDiagnosticsRecorder::write(Block block) {
    ++*pendingWrites_;
    queue_->async([pending = pendingWrites_, block = std::move(block)] {
        block();
        --*pending;
    });
}

void SessionDiagnosticsRecorder::announce(const std::filesystem::path& directory) {
    if (environment_.notifications)
        environment_.notifications->post(diagnosticsRunDidUpdate, directory);
}

/// Writes the recording's ID into the manifest now, so that deleting the recording also finds the
/// run of a session that crashed.
void SessionDiagnosticsRecorder::noteRecording(const std::optional<RecordingMetadata>& recording) {
    if (!run_ || (!recording && !run_->recording))
        return;
    run_->recording = recording;
    write([run = run_, manifest = run_->manifestHead()]() mutable {
        manifest["host"] = run->host;
        manifest["files"] = run->files.manifestFileEntries();
        run->files.writeManifest(manifest);
    });
}

void SessionDiagnosticsRecorder::stopWithoutExport() {
    if (!run_)
        return;
    const auto directory = run_->files.directory();
    close(std::exchange(run_, nullptr));
    announce(directory);
}

/// Closes the logs on the recorder's queue, because closing waits for the disk.
void SessionDiagnosticsRecorder::close(std::shared_ptr<Run> run) {
    if (run->sampler)
        run->sampler->stop();
    write([run = std::move(run)] {
        JSON::Value lost;
        run->closeLogs(lost);
        run->lifecycle->close();
    });
}

void SessionDiagnosticsRecorder::discardCurrentRun() {
    if (!run_)
        return;
    const auto directory = run_->files.directory();
    close(std::exchange(run_, nullptr));
    write([&files = environment_.files, directory] {
        DiagnosticsRunFiles(files, directory, {}, false).remove();
    });
    announce(directory);
}

void SessionDiagnosticsRecorder::closeLifecycle() {
    if (!finished_)
        return;
    write([this, run = std::exchange(finished_, nullptr)] {
        run->writeLifecycle(environment_.host.now(), "session.lifecycle.close");
        run->lifecycle->close();
        if (!run->manifest.is_object())
            return;
        // The log has grown since the manifest was written, by the entries about saving.
        const auto complete = [&run](JSON::Value& manifest) {
            if (run->lifecycle->lostRecords() > 0)
                manifest["lostRecords"]["lifecycleEvents"] = run->lifecycle->lostRecords();
            manifest["files"] = run->files.manifestFileEntries();
        };
        if (!run->files.changeManifest(complete)) {
            complete(run->manifest); // the manifest could not be written before
            run->files.writeManifest(run->manifest);
        }
        removeIfDeleted(run->recording, run->files.directory());
    });
}

/// Removes a run whose recording was deleted while the run was being written.
void SessionDiagnosticsRecorder::removeIfDeleted(const std::optional<RecordingMetadata>& recording,
                                                 const std::filesystem::path& directory) {
    if (recording && environment_.catalog.wasDeleted(recording->id))
        DiagnosticsRunFiles(environment_.files, directory, {}, false).remove();
}

void SessionDiagnosticsRecorder::updateFinishedSnapshot(const TranscriptSnapshot& snapshot) {
    if (!lastFinished_)
        return;
    if (!lastFinished_->exchange(snapshot)) {
        write([this, finished = lastFinished_] {
            if (const auto texts = finished->exchange(std::nullopt))
                DiagnosticsRunFiles::refreshManifestTranscriptSummary(
                    environment_.files, finished->directory, *texts, environment_.host.wallClock());
            removeIfDeleted(finished->recording, finished->directory);
        });
    }
    announce(lastFinished_->directory);
}

void SessionDiagnosticsRecorder::startIdleMemorySentinel(const IdleWatch& watch) {
    sentinel_.start(lastFinished_ ? std::optional(lastFinished_->directory) : std::nullopt,
                    watch.reason, watch.snapshotProvider);
}

} // namespace tessarune
