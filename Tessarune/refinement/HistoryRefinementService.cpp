#include "Tessarune/refinement/HistoryRefinementService.h"

#include "Tessarune/refinement/FormerTranscript.h"
#include "Tessarune/refinement/HistoryRefinementJob.h"
#include "TessaruneCore/host/CancellationError.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

namespace tessarune {

namespace {

using Observer = HistoryRefinementObserver;
using Outcome = HistoryRefinementOutcome;
using Mark = RecordingCatalog::TranscriptionMark;
using SaveOutcome = RecordingTranscriptSaveOutcome;

/// Seconds between two checks whether a paused job may continue.
constexpr double pauseCheckSeconds = 0.5;
constexpr double endCheckSeconds = 0.02;
/// After this many seconds a hung recogniser no longer delays the end of the program.
constexpr double longestEndSeconds = 5;
constexpr const char* span = "history.refine";

std::int64_t milliseconds(double seconds) {
    return std::llround(seconds * 1000);
}

Observer::Status statusOf(const Outcome& outcome) {
    switch (outcome.status) {
    case Outcome::Status::finished:
        return Observer::Status::finished;
    case Outcome::Status::deleted:
    case Outcome::Status::cancelled:
        return Observer::Status::skipped;
    case Outcome::Status::failed:
        break;
    }
    return Observer::Status::failed;
}

/// Another program writes the data folder, or it cannot be written.
struct DataFolderUnavailable : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Whether a retry at the next launch is pointless: the job was cancelled, or would fail for the
/// same reason. A full disk, or a model that cannot be loaded, may be a temporary reason.
bool isLasting(const Outcome& outcome) {
    return outcome.status == Outcome::Status::cancelled ||
           outcome.failure == Outcome::Failure::nothingUnderstood ||
           outcome.failure == Outcome::Failure::sound;
}

/// Whether the job leaves nothing for the next launch to complete.
bool isOver(const Outcome& outcome, bool isEnding) {
    switch (outcome.status) {
    case Outcome::Status::finished:
        return !isEnding || outcome.translation != Outcome::Translation::cancelled;
    case Outcome::Status::deleted:
        return true;
    case Outcome::Status::cancelled:
    case Outcome::Status::failed:
        break;
    }
    return !isEnding && isLasting(outcome);
}

} // namespace

HistoryRefinementPersistenceError::HistoryRefinementPersistenceError(const UUID& recording)
    : std::runtime_error("Failed to persist refined transcript sidecars for recording " +
                         recording.text()) {}

HistoryRefinementService::HistoryRefinementService(Environment environment)
    : environment_(std::move(environment)),
      queue_(environment_.host.serialQueue("Tessarune.HistoryRefinement", QueuePriority::utility)),
      worker_(Executor::queue(environment_.host, queue_)) {}

HistoryRefinementService::~HistoryRefinementService() {
    cancelAll();
    queue_->sync([] {});
}

void HistoryRefinementService::cancelAll() {
    isEnding_ = true;
    for (const JobPtr& job : std::exchange(waiting_, {})) {
        job->outcome.status = Outcome::Status::cancelled;
        job->done.resume(job->outcome);
    }
    if (!running_)
        return;
    running_->stop.request_stop();
    leaveToNextLaunch(*running_); // now, because the job never ends if its recogniser hangs
}

Task<void> HistoryRefinementService::end() {
    cancelAll();
    const double deadline = environment_.host.now() + longestEndSeconds;
    while (running_ && environment_.host.now() < deadline)
        co_await sleep(Executor::main(environment_.host), endCheckSeconds);
}

void HistoryRefinementService::schedule(const std::optional<HistoryRefinementRequest>& request) {
    if (!request || isEnding_)
        return;
    environment_.logger.event("history.refine.schedule",
                              {{"recordingID", request->recordingID.text()},
                               {"optionID", request->recognitionOptionID},
                               {"locale", request->localeIdentifier}});
    const auto earlier = std::ranges::find_if(waiting_, [&](const JobPtr& job) {
        return job->request.recordingID == request->recordingID;
    });
    if (earlier != waiting_.end()) {
        (*earlier)->request = *request;
        return;
    }
    enqueue(std::make_shared<Job>(environment_.host, *request, bestModel));
}

Task<Outcome> HistoryRefinementService::refine(HistoryRefinementRequest request, std::string model,
                                               std::stop_token stop) {
    const JobPtr job =
        std::make_shared<Job>(environment_.host, std::move(request), std::move(model));
    const std::stop_callback cancel(stop, [&job] { job->stop.request_stop(); });
    if (isEnding_) {
        job->outcome.status = Outcome::Status::cancelled;
        co_return job->outcome;
    }
    enqueue(job);
    co_return co_await job->done;
}

void HistoryRefinementService::cancel(const UUID& recording) {
    const auto matches = [&](const JobPtr& job) { return job->request.recordingID == recording; };
    std::vector<JobPtr> dropped;
    std::ranges::copy_if(waiting_, std::back_inserter(dropped), matches);
    std::erase_if(waiting_, matches);
    if (running_ && matches(running_))
        running_->stop.request_stop();
    else if (!dropped.empty())
        jobs_.mutate([&](Jobs& jobs) { jobs.erase(recording); });
    for (const JobPtr& job : dropped) {
        if (job->dataFolder.hold)
            settleImport(recording);
        job->outcome.status = Outcome::Status::cancelled;
        job->done.resume(job->outcome);
    }
}

void HistoryRefinementService::enqueue(JobPtr job) {
    const UUID& recording = job->request.recordingID;
    job->dataFolder = environment_.leaseDataFolder();
    if (failures_->contains(recording))
        failures_.mutate([&](Failures& failures) { failures.erase(recording); });
    setProgress(*job, {Progress::Step::waiting, 0, isOnHold()});
    waiting_.push_back(std::move(job));
    if (!running_)
        beginNext();
}

void HistoryRefinementService::beginNext() {
    if (waiting_.empty()) {
        engine_.reset(); // with the models that it holds
        translator_.reset();
        return;
    }
    running_ = std::move(waiting_.front());
    waiting_.pop_front();
    spawn(Executor::main(environment_.host), work(running_));
}

Task<void> HistoryRefinementService::work(JobPtr job) {
    Task<void> running = run(job);
    co_await running;
    running_.reset();
    if (!isEnding_ && job->dataFolder.hold && isLasting(job->outcome))
        settleImport(job->request.recordingID);
    if (isOver(job->outcome, isEnding_))
        removeMark(*job);
    else
        leaveToNextLaunch(*job);
    job->dataFolder = {};
    const bool isQueuedAgain = std::ranges::any_of(waiting_, [&](const JobPtr& other) {
        return other->request.recordingID == job->request.recordingID;
    });
    if (!isQueuedAgain)
        jobs_.mutate([&](Jobs& jobs) { jobs.erase(job->request.recordingID); });
    if (job->outcome.status == Outcome::Status::failed && !isSilence(*job))
        failures_.mutate(
            [&](Failures& failures) { failures[job->request.recordingID] = job->outcome.problem; });
    environment_.returnMemory();
    job->done.resume(job->outcome);
    beginNext();
}

/// Saves an empty transcript for an import that has none, and removes its mark. Otherwise the next
/// launch would transcribe the import again, or would report an unexpected end of the program.
void HistoryRefinementService::settleImport(const UUID& id) {
    RecordingCatalog& catalog = environment_.catalog;
    try {
        const bool isSettled = !lacksText(id) || catalog.saveTranscript("", id);
        if (isSettled && catalog.transcriptionMark(id) != Mark::none)
            catalog.markTranscription(Mark::none, id);
    } catch (const std::system_error&) { // the next launch retries
    }
}

/// Whether the recording is an import without a transcript.
bool HistoryRefinementService::lacksText(const UUID& id) const {
    const auto recording = environment_.catalog.recording(id);
    return recording && recording->isImport() &&
           !environment_.files.exists(environment_.catalog.transcriptURL(id));
}

/// Writes the mark of an unfinished import before anything decodes or recognises its file: a file
/// that crashes the program must not do so at each launch. The mark stays until the translation is
/// done as well.
Task<void> HistoryRefinementService::markFirstText(JobPtr job) {
    const UUID id = job->request.recordingID;
    bool isReady = true;
    bool isMarked = false;
    co_await runOn(worker_, [&] {
        RecordingCatalog& catalog = environment_.catalog;
        if (lacksText(id) || catalog.transcriptionMark(id) != Mark::none)
            isReady = isMarked = catalog.markTranscription(Mark::running, id);
    });
    job->isMarked = isMarked;
    if (!isReady)
        throw HistoryRefinementPersistenceError(id);
}

void HistoryRefinementService::removeMark(Job& job) {
    if (std::exchange(job.isMarked, false))
        environment_.catalog.markTranscription(Mark::none, job.request.recordingID);
}

/// Leaves an unfinished import to the next launch. If it has a text, its mark becomes
/// `interrupted`. If it has none, it needs no mark: the next launch finds it by the missing text.
/// If the mark cannot be changed, it is removed: the old mark would mean that the program ended
/// unexpectedly.
void HistoryRefinementService::leaveToNextLaunch(Job& job) {
    const UUID& id = job.request.recordingID;
    if (!job.isMarked)
        return;
    try {
        if (!lacksText(id) && environment_.catalog.markTranscription(Mark::interrupted, id))
            return;
    } catch (const std::system_error&) { // it is unknown whether there is a text
    }
    // `isMarked` stays true: a job that still runs may save a text, and decides about the mark when
    // it ends.
    environment_.catalog.markTranscription(Mark::none, id);
}

/// Whether the recogniser has found no text, and the recording had none before. The user can do
/// nothing about this, so it is not shown as a failure.
bool HistoryRefinementService::isSilence(const Job& job) const {
    const auto text = environment_.catalog.transcriptURL(job.request.recordingID);
    try {
        return job.outcome.failure == Outcome::Failure::nothingUnderstood &&
               (!environment_.files.exists(text) || environment_.files.size(text) == 0);
    } catch (const std::system_error&) {
        return false;
    }
}

Task<void> HistoryRefinementService::run(JobPtr job) {
    const HistoryRefinementRequest& request = job->request;
    job->startedAt = environment_.host.now();
    if (environment_.observe)
        job->observer = environment_.observe(request);
    if (job->observer) {
        LogFields fields = job->recording();
        fields.add("audioPath", request.audioPath)
            .add("optionID", request.recognitionOptionID)
            .add("locale", request.localeIdentifier)
            .add("translationBackend", request.translationBackend)
            .add("translationTargetLanguage", request.translationTargetLanguage);
        job->observer->lifecycle({span, LifecyclePhase::start, fields, {}, {}});
    }
    Outcome& outcome = job->outcome;
    const auto fail = [&outcome](Outcome::Failure kind, const std::exception& error) {
        outcome.status = Outcome::Status::failed;
        outcome.failure = kind;
        outcome.problem = error.what();
    };
    using TranscriberError = SpeechAnalyzerFileTranscriberError;
    bool isDeleted = false;
    try {
        Task<void> refining = refineSource(job);
        co_await refining;
    } catch (const RecordingDeleted&) {
        isDeleted = true;
    } catch (const CancellationError&) {
        outcome.status = Outcome::Status::cancelled;
    } catch (const MediaFileError& error) {
        fail(Outcome::Failure::sound, error);
    } catch (const AudioConversionError& error) {
        fail(Outcome::Failure::sound, error);
    } catch (const HistoryRefinementPersistenceError& error) {
        fail(Outcome::Failure::disk, error);
    } catch (const DataFolderUnavailable& error) {
        fail(Outcome::Failure::disk, error);
    } catch (const std::system_error& error) { // the former transcript cannot be read
        fail(Outcome::Failure::disk, error);
    } catch (const TranscriberError& error) {
        const bool isEmpty = error.kind() == TranscriberError::Kind::emptyResult;
        fail(isEmpty ? Outcome::Failure::nothingUnderstood : Outcome::Failure::recogniser, error);
    } catch (const std::exception& error) {
        fail(Outcome::Failure::recogniser, error);
    }
    // If the recording was deleted, its missing file is not a failure. The problem is dropped: its
    // text may name the file.
    if (outcome.failure != Outcome::Failure::none)
        isDeleted = environment_.catalog.wasDeleted(request.recordingID);
    if (isDeleted) {
        outcome = Outcome();
        outcome.status = Outcome::Status::deleted;
        LogFields fields{{"reason", "recordingDeleted"}};
        job->note("history.refine.source.skipped", fields.add(job->recording()));
    }
    const double elapsed = environment_.host.now() - job->startedAt;
    if (outcome.status == Outcome::Status::failed) {
        LogFields fields{{"error", outcome.problem}, {"elapsedMS", milliseconds(elapsed)}};
        fields.add(job->recording())
            .add("optionID", request.recognitionOptionID)
            .add("locale", request.localeIdentifier);
        environment_.logger.event("history.refine.failed", fields);
        job->note("history.refine.failed", fields);
    }
    if (job->observer) {
        const Observer::Status status = statusOf(job->outcome);
        job->observer->lifecycle({span, LifecyclePhase::finish, {}, status, elapsed});
        job->observer->close(status);
    }
}

/// The text is saved before its translation, so that the better text is shown at once.
Task<void> HistoryRefinementService::refineSource(JobPtr job) {
    const HistoryRefinementRequest& request = job->request;
    Task<void> waiting = waitWhilePaused(job); // before a model is loaded
    co_await waiting;
    if (!job->dataFolder.hold)
        job->dataFolder = environment_.leaseDataFolder();
    if (!job->dataFolder.hold)
        throw DataFolderUnavailable(job->dataFolder.problem);
    Task<void> marking = markFirstText(job);
    co_await marking;
    if (!engine_)
        engine_ = environment_.engine();
    SpeechAnalyzerFileTranscriber transcriber({environment_.host, worker_, *engine_,
                                               environment_.openMedia, environment_.makeConverter,
                                               environment_.logger});
    SpeechAnalyzerFileTranscriber::Control control;
    control.model = job->model;
    control.stop = job->stop.get_token();
    control.beforeBlock = [this, job] { return waitWhilePaused(job); };
    control.progress = [this, job](double heard, std::optional<double> duration) {
        setStep(*job, Progress::Step::transcribing,
                duration && *duration > 0 ? std::min(heard / *duration, 1.0) : 0.0);
    };
    SpeechAnalyzerFileTranscriberDiagnostics diagnostics;
    if (job->observer) {
        const std::weak_ptr<Observer> weak = job->observer;
        diagnostics.onResult = [weak](const auto& summary) {
            if (const auto observer = weak.lock())
                observer->appleResult(summary);
        };
        diagnostics.onSplit = [weak](const auto& observation) {
            if (const auto observer = weak.lock())
                observer->splitCandidate(observation);
        };
    }
    setStep(*job, Progress::Step::transcribing, 0);
    Task<SpeechAnalyzerFileTranscriber::Transcription> transcribing = transcriber.transcribe(
        audioPathOf(*job), request.localeIdentifier, std::move(control), std::move(diagnostics));
    const SpeechAnalyzerFileTranscriber::Transcription transcription = co_await transcribing;

    std::string missingSound;
    const std::size_t recognised = transcription.result.segments.size();
    RecordingCatalog& catalog = environment_.catalog;
    co_await runOn(worker_, [&] {
        const auto recording = catalog.recording(request.recordingID);
        const FormerTranscript former =
            FormerTranscript::of(request.recordingID, recording, catalog, environment_.files);
        if (!former.wasHeard(transcription.heardSeconds, transcription.brokenOff.empty())) {
            missingSound = transcription.brokenOff.empty() ? localized("the file is too short")
                                                           : transcription.brokenOff;
            return;
        }
        if (recording && transcription.brokenOff.empty())
            correctDuration(*recording, transcription.heardSeconds);
        job->result = former.keptIn(transcription.result);
    });
    if (!missingSound.empty())
        throw MediaFileError(MediaFileError::Kind::damaged,
                             localized("Part of the recording is missing: %@", {missingSound}));
    // The sentences are reported first, so that a diagnostics run has them even if the transcript
    // cannot be saved.
    for (std::size_t i = 0; job->observer && i < job->result.segments.size(); ++i)
        job->observer->finalSegment(static_cast<std::int64_t>(i), job->result.segments[i]);

    SaveOutcome saved = SaveOutcome::skippedDeleted;
    std::string timelineKind;
    co_await runOn(worker_, [&] {
        const auto timeline = job->result.wordTimeline(request.recognitionOptionID);
        timelineKind = timeline ? timeline->timingKind : std::string();
        saved = catalog.saveRefinedSourceTranscript(job->result.sourceText(), timeline,
                                                    request.recordingID);
    });
    if (saved == SaveOutcome::skippedDeleted)
        throw RecordingDeleted();
    if (saved != SaveOutcome::saved)
        throw HistoryRefinementPersistenceError(request.recordingID);

    Outcome& outcome = job->outcome;
    outcome.status = Outcome::Status::finished;
    outcome.model = transcription.model;
    outcome.sentences = std::ssize(job->result.segments);
    outcome.keptOfFormer = outcome.sentences - static_cast<std::int64_t>(recognised);
    outcome.heardSeconds = transcription.heardSeconds;
    outcome.brokenOff = transcription.brokenOff;
    LogFields fields = job->recording();
    fields.add("segments", outcome.sentences)
        .add("elapsedMS", milliseconds(environment_.host.now() - job->startedAt))
        .add("timelineKind", timelineKind)
        .add("model", outcome.model)
        .add("keptOfFormer", outcome.keptOfFormer);
    environment_.logger.event("history.refine.source.done", fields);
    if (job->observer)
        job->observer->sourceSaved(outcome.sentences, timelineKind);
    Task<void> translating = translateAndSaveIfPossible(job);
    co_await translating;
}

/// Corrects the duration of an import: its container only estimates the length of the sound, or
/// states that of the video.
void HistoryRefinementService::correctDuration(RecordingMetadata recording, double heardSeconds) {
    constexpr double smallestCorrection = 1; // seconds
    const bool isImport = !FormerTranscript::lengthIsExact(recording);
    if (!isImport || std::abs(recording.duration - heardSeconds) < smallestCorrection)
        return;
    recording.note.reset(); // without a note, `upsert` keeps the stored one, which may be newer
    recording.duration = heardSeconds;
    recording.endedAt = recording.startedAt + heardSeconds;
    environment_.catalog.upsert(recording);
}

/// Waits while refinements are paused. Throws CancellationError if the job was cancelled, and
/// RecordingDeleted if its recording was deleted.
Task<void> HistoryRefinementService::waitWhilePaused(JobPtr job) {
    const std::stop_token stop = job->stop.get_token();
    while (isOnHold() && !stop.stop_requested())
        co_await sleep(Executor::main(environment_.host), pauseCheckSeconds, stop);
    if (stop.stop_requested())
        throw CancellationError();
    if (environment_.catalog.wasDeleted(job->request.recordingID))
        throw RecordingDeleted();
}

/// The compressor may have replaced the recording's file since the request was made.
std::string HistoryRefinementService::audioPathOf(const Job& job) const {
    const auto recording = environment_.catalog.recording(job.request.recordingID);
    return recording ? recording->filePath : job.request.audioPath;
}

void HistoryRefinementService::setPaused(const void* who, bool isPaused) {
    const bool before = isOnHold();
    if (isPaused)
        pausedBy_.insert(who);
    else
        pausedBy_.erase(who);
    if (isOnHold() == before || jobs_->empty())
        return;
    jobs_.mutate([&](Jobs& jobs) {
        for (auto& [id, progress] : jobs)
            progress.isPaused = isPaused;
    });
}

void HistoryRefinementService::setStep(const Job& job, Progress::Step step, double fraction) {
    setProgress(job, {step, fraction, isOnHold()});
}

void HistoryRefinementService::setProgress(const Job& job, Progress progress) {
    jobs_.mutate([&](Jobs& jobs) { jobs[job.request.recordingID] = progress; });
}

} // namespace tessarune
