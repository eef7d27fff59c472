#pragma once

#include "Tessarune/history/DataFolderHold.h"
#include "Tessarune/history/HistoryRefinementRequest.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/refinement/HistoryRefinementObserver.h"
#include "Tessarune/refinement/HistoryRefinementOutcome.h"
#include "Tessarune/refinement/SpeechAnalyzerFileTranscriber.h"
#include "TessaruneCore/observation/Published.h"
#include "TessaruneCore/translation/Translator.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>

namespace tessarune {

/// Transcribes recordings again, with a recogniser that has time to look ahead, and replaces their
/// transcripts with the result: first the text, then its translation. One recording after the
/// other.
///
/// A job that fails or is cancelled before the new text is saved leaves the former transcript
/// unchanged. The deletion of a recording ends its job. A job fails if it cannot read all the sound
/// that the former transcript covers. A former sentence stays if the recogniser finds nothing at
/// its time.
///
/// Main queue; reading and saving happen on a queue of utility priority. Jobs are not persistent:
/// the end of the program drops them, and the former transcripts stay. If an import still lacks
/// its text or its translation, the next launch can tell why: its job was dropped when the program
/// ended regularly, or the job crashed the program (see RecordingRepair).
class HistoryRefinementService {
  public:
    struct Environment {
        Host& host;
        FileSystem& files;
        RecordingCatalog& catalog;
        TessaruneFileLogger& logger;
        /// Called at the first job, and again at the first job after the queue was empty.
        std::function<SpeechEngine()> engine;
        OpenMediaFile openMedia;
        MakeAudioConverter makeConverter;
        /// If empty, nothing is translated.
        std::function<std::shared_ptr<Translator>()> makeTranslator;
        /// Makes the observer of a job; may return null.
        std::function<std::shared_ptr<HistoryRefinementObserver>(const HistoryRefinementRequest&)>
            observe = nullptr;
        /// Returns free memory to the operating system. Called after each job.
        std::function<void()> returnMemory = [] {};
        /// Called for each job, which keeps the lease while it waits and runs. A job without a hold
        /// calls it again when it begins, and fails if it still gets none.
        std::function<DataFolderLease()> leaseDataFolder = unsharedDataFolder;
    };

    /// The progress of a job.
    struct Progress {
        enum class Step { waiting, transcribing, translating };
        Step step = Step::waiting;
        double fraction = 0;   ///< of the current step
        bool isPaused = false; ///< while a session listens

        bool operator==(const Progress&) const = default;
    };
    using Jobs = std::map<UUID, Progress>;
    using Failures = std::map<UUID, std::string>;

    explicit HistoryRefinementService(Environment environment);
    /// Stands for the best model; `schedule` uses it.
    static constexpr const char* bestModel = "automatic";

    /// Cancels the running job and waits for its current read or write.
    ~HistoryRefinementService();
    HistoryRefinementService(const HistoryRefinementService&) = delete;

    /// Queues the request and returns at once; ignores `nullopt`. A request for a recording that is
    /// still queued replaces the earlier one.
    void schedule(const std::optional<HistoryRefinementRequest>& request);

    /// Queues the request and returns the outcome when the job ends. `model` is "automatic" for the
    /// best model, or a name.
    Task<HistoryRefinementOutcome> refine(HistoryRefinementRequest request, std::string model,
                                          std::stop_token stop = {});

    /// Cancels the queued and running jobs of this recording; its transcript stays.
    void cancel(const UUID& recording);

    /// Cancels all jobs and waits until none is running, for at most five seconds. For the end of
    /// the program: later calls of `schedule` are ignored, and later calls of `refine` return
    /// `cancelled`.
    Task<void> end();

    /// Pauses or resumes the service for the caller `who`; it is paused as long as any caller wants
    /// that. Work stops between two blocks of sound or two sentences, so that a listening session
    /// has the processor.
    void setPaused(const void* who, bool isPaused);

    /// The recordings that are queued or being refined.
    const Published<Jobs>& jobs() const { return jobs_; }
    /// For each recording whose last job since the start of the program failed, the reason. A
    /// recording in which no speech was found, and which had no text before, has no entry. A new
    /// job of the recording removes its entry.
    const Published<Failures>& failures() const { return failures_; }

  private:
    struct Job;
    using JobPtr = std::shared_ptr<Job>;

    void cancelAll();
    bool isOnHold() const { return !pausedBy_.empty(); }
    void enqueue(JobPtr job);
    void beginNext();
    Task<void> work(JobPtr job);
    bool isSilence(const Job& job) const;
    void settleImport(const UUID& id);
    bool lacksText(const UUID& id) const;
    Task<void> markFirstText(JobPtr job);
    void removeMark(Job& job);
    void leaveToNextLaunch(Job& job);
    Task<void> run(JobPtr job);
    Task<void> refineSource(JobPtr job);
    Task<void> waitWhilePaused(JobPtr job);
    void correctDuration(RecordingMetadata recording, double heardSeconds);
    std::string audioPathOf(const Job& job) const;
    void setProgress(const Job& job, Progress progress);
    void setStep(const Job& job, Progress::Step step, double fraction);

    // HistoryRefinementService+Translation.cpp
    Task<void> translateAndSaveIfPossible(JobPtr job);
    Task<std::string> translateSegments(JobPtr job, std::string source);

    const Environment environment_;
    const std::shared_ptr<SerialQueue> queue_;
    const Executor worker_;
    std::optional<SpeechEngine> engine_;
    std::shared_ptr<Translator> translator_;
    std::deque<JobPtr> waiting_;
    JobPtr running_;
    std::set<const void*> pausedBy_;
    bool isEnding_ = false;
    Published<Jobs> jobs_;
    Published<Failures> failures_;
};

} // namespace tessarune
