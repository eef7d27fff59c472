#pragma once

#include "Tessarune/history/HistoryRefinementRequest.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/refinement/FormerTranscript.h"
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

/// Transcribes recordings again, with time to look ahead, and replaces their transcripts by what
/// comes of it: first the text, then its translation. One recording after the other.
///
/// Whatever fails, ends early or meets a recording that was deleted leaves the former transcript
/// whole. Text whose sound was not heard is never replaced, and a former sentence stays where the
/// recogniser has nothing.
///
/// Main queue; reading and saving happen on a queue of utility priority. Nothing persists a job:
/// one that the end of the program overtakes is lost, and the former transcript stays.
class HistoryRefinementService {
  public:
    struct Environment {
        Host& host;
        FileSystem& files;
        RecordingCatalog& catalog;
        TessaruneFileLogger& logger;
        std::function<SpeechEngine()> engine; ///< asked when the first job begins
        OpenMediaFile openMedia;
        MakeAudioConverter makeConverter;
        std::function<std::shared_ptr<Translator>()>
            makeTranslator; ///< null: nothing is translated
        /// Null, or who watches this job.
        std::function<std::shared_ptr<HistoryRefinementObserver>(const HistoryRefinementRequest&)>
            observe = nullptr;
        /// Returns free memory to the operating system; any thread.
        std::function<void()> returnMemory = [] {};
    };

    /// How far a job is.
    struct Progress {
        enum class Step { waiting, transcribing, translating };
        Step step = Step::waiting;
        double fraction = 0;   ///< of the step
        bool isPaused = false; ///< while a session listens

        bool operator==(const Progress&) const = default;
    };
    using Jobs = std::map<UUID, Progress>;
    using Failures = std::map<UUID, std::string>;

    explicit HistoryRefinementService(Environment environment);
    /// What a request without a wish is done with.
    static constexpr const char* bestModel = "automatic";

    /// Ends what is running and waits for what it reads or writes at this moment.
    ~HistoryRefinementService();
    HistoryRefinementService(const HistoryRefinementService&) = delete;

    /// Queues the request and returns at once; nothing to do for an absent one. A request for a
    /// recording that still waits takes the place of the earlier one.
    void schedule(const std::optional<HistoryRefinementRequest>& request);

    /// The same, and resumes with what became of it. `model`: "automatic" for the best one, or a
    /// name.
    Task<HistoryRefinementOutcome> refine(HistoryRefinementRequest request, std::string model,
                                          std::stop_token stop = {});

    /// Gives up what waits or runs for this recording; its transcript stays as it was.
    void cancel(const UUID& recording);

    /// Gives up all jobs, and resumes when nothing is running any more, after five seconds in any
    /// case. For the end of the program: nothing is scheduled from then on.
    Task<void> end();

    /// Between two blocks of sound and between two sentences the work waits while it is paused: a
    /// session that listens has the processor. It is paused as long as anybody wants it.
    void setPaused(const void* who, bool isPaused);

    /// The recordings that are being refined or wait for it.
    const Published<Jobs>& jobs() const { return jobs_; }
    /// Why recordings were not refined when it was tried last, since the program began. A new
    /// request for a recording forgets it.
    const Published<Failures>& failures() const { return failures_; }

  private:
    struct Job;
    using JobPtr = std::shared_ptr<Job>;

    void cancelAll();
    bool isOnHold() const { return !pausedBy_.empty(); }
    void enqueue(JobPtr job);
    void beginNext();
    Task<void> work(JobPtr job);
    Task<void> run(JobPtr job);
    Task<void> refineSource(JobPtr job);
    Task<void> mayContinue(JobPtr job);
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
