#include "Terminal/CaptionsRun.h"

#include "Terminal/CaptionOutput.h"
#include "Terminal/CaptionSound.h"
#include "Terminal/EventLogFile.h"
#include "Terminal/RecogniserDelay.h"
#include "Terminal/RunFailure.h"
#include "Terminal/RunOutput.h"
#include "Terminal/RunPreparation.h"
#include "Terminal/RunTranslation.h"
#include "Terminal/SessionNews.h"
#include "Terminal/SignalWatch.h"
#include "Terminal/TranslationOffer.h"
#include "Terminal/history/RefineCommand.h"
#include "Tessarune/app/ListeningSession.h"
#include "Tessarune/audio/MediaFile.h"
#include "TessaruneCore/text/Localization.h"

#include <unistd.h>

#include <utility>

namespace tessarune {

namespace {

/// Everything of one run, in one place that outlives all its callbacks.
class CaptionsRun {
  public:
    CaptionsRun(Program& program, const TerminalOptions& options, CaptionsCommand command);
    CaptionsRun(const CaptionsRun&) = delete;

    /// Opens the source and checks what the run needs; false if it was interrupted. Throws
    /// RunFailure.
    Task<bool> open();
    /// The sample comes without questions.
    bool mayAsk() const { return !sound_.isDemo(); }
    /// From the first sound to the saved session. Throws RunFailure.
    Task<void> run();
    /// Ends the session in order.
    void interrupt();
    /// Redraws after another program used the terminal.
    void beginAnew() { output_.beginAnew(); }
    /// What would make the saved transcript better, if there is such a thing and if somebody sees
    /// how far it gets.
    std::optional<HistoryRefinementRequest> refinement() const;
    /// The last words, and why the run failed, if it did. Gives the status to end with.
    Task<ExitStatus> finish(ExitStatus status, std::string problem);

  private:
    void checkEventLog();
    void makeSession();
    void update();
    void handlePhase(LiveSessionPhase phase);
    Task<void> startListening();
    void endWith(std::exception_ptr failure);
    bool isFast() const;
    std::string silenceHint() const;

    void say(const std::string& text) const { output_.say(text); }
    LiveTranscriptStore& store() { return session_->store(); }

    Program& program_;
    const bool isWatched_; ///< by somebody at a terminal
    const CaptionsCommand command_;
    RunOutput output_;
    RunTranslation translation_;
    CaptionSound sound_;
    std::optional<EventLogFile> eventLog_;
    std::unique_ptr<ListeningSession> session_;
    std::unique_ptr<SessionNews> news_;
    std::unique_ptr<RecogniserDelay> delay_;
    std::optional<HistoryRefinementRequest> refinement_;
    OneShot<std::exception_ptr> ended_; ///< null for a good end
    bool interrupted_ = false;
};

CaptionsRun::CaptionsRun(Program& program, const TerminalOptions& options, CaptionsCommand command)
    : program_(program),
      isWatched_(isScreen(STDERR_FILENO) && isatty(STDIN_FILENO) && !options.quiet &&
                 !options.json),
      command_(std::move(command)),
      output_(program.host, options, {[this] { update(); }, [this] { interrupt(); }}),
      translation_(
          program, command_.target,
          options.quiet ? std::function<void(const std::string&)>()
                        : [this](const std::string& text) { say(text); }),
      sound_(program.host, {[this](const std::string& text) { say(text); },
                            [this](std::exception_ptr failure) { endWith(std::move(failure)); },
                            [this] { return delay_->heardSeconds(); }}),
      ended_(Executor::main(program.host)) {}

Task<bool> CaptionsRun::open() {
    RunPreparation::overrideSettings(program_, command_);
    try {
        co_await sound_.open(command_);
    } catch (const RunFailure&) {
        if (interrupted_)
            co_return false; // it was given up and did not fail
        throw;
    }
    checkEventLog();
    RunPreparation::checkModel(program_);
    co_return true;
}

Task<void> CaptionsRun::run() {
    // The sample is the program's own and no part of the user's history.
    if (sound_.isDemo())
        program_.recordNothing();
    RunPreparation::prepareToRecord(program_, command_, output_);
    makeSession();
    if (!interrupted_)
        co_await startListening();
    if (!ended_.hasValue()) {
        say(sound_.description() + silenceHint());
        sound_.begin();
        // A file that waits for the recogniser is always some seconds ahead of it.
        if (!isFast())
            delay_->watch([this](const std::string& text) { say(text); });
        else if (const auto duration = sound_.fastDuration(); duration && *duration > 0)
            delay_->watchProgress(*duration, [this](int percent) {
                output_.progress(std::to_string(percent) + " %");
            });
    }
    const std::exception_ptr failure = co_await ended_;
    delay_->endWatch();
    // A file is over before a slow computer has heard it; live sound that was stopped by hand is
    // not waited for longer than the session's own drain.
    Task<void> catchingUp = delay_->caughtUp([this] { return interrupted_; });
    co_await catchingUp;
    delay_->endProgress();
    co_await session_->stop();
    news_->tellSaved(program_.catalog, program_.files);
    if (eventLog_)
        eventLog_->close();
    if (failure)
        std::rethrow_exception(failure);
}

void CaptionsRun::checkEventLog() {
    if (!command_.eventLog)
        return;
    eventLog_.emplace(program_.host, *command_.eventLog, command_.overwrites);
    eventLog_->check(sound_.file());
}

void CaptionsRun::makeSession() {
    const std::string target = translation_.choose();
    session_ = std::make_unique<ListeningSession>(
        program_, sound_.server(),
        ListeningSession::Options{[this](const ASREvent& event) {
                                      if (eventLog_)
                                          eventLog_->append(event);
                                  },
                                  sound_.isFile() || sound_.isDemo(),
                                  [this](const auto& request) { refinement_ = request; }});
    delay_ = std::make_unique<RecogniserDelay>(program_.host, store().liveTranscriber());
    news_ = std::make_unique<SessionNews>(
        store().view(), target, program_.recordsSessions(),
        SessionNews::Handlers{[this] { update(); }, [this](const std::string& text) { say(text); },
                              [this](const std::string& text) { output_.progress(text); },
                              [this](LiveSessionPhase phase) { handlePhase(phase); }});
    translation_.follow([this](std::string changed) { news_->setTarget(std::move(changed)); });
}

void CaptionsRun::update() {
    if (news_)
        output_.update(news_->picture());
}

void CaptionsRun::handlePhase(LiveSessionPhase phase) {
    if (phase == LiveSessionPhase::listening && eventLog_) {
        try {
            eventLog_->begin();
        } catch (const RunFailure&) {
            ended_.resume(std::current_exception());
        }
    }
    // It may end by itself, after a long silence.
    if (phase == LiveSessionPhase::stopping || phase == LiveSessionPhase::failed)
        ended_.resume(nullptr);
}

Task<void> CaptionsRun::startListening() {
    const bool listens = co_await session_->listen(sound_.source());
    const SessionView& view = store().view();
    if (!listens && view.startFailure && *view.sessionPhase == LiveSessionPhase::failed)
        throw RunFailure::ofStart(view.startFailure);
}

void CaptionsRun::endWith(std::exception_ptr failure) {
    try {
        if (failure)
            std::rethrow_exception(failure);
        ended_.resume(nullptr);
    } catch (const MediaFileError& error) {
        ended_.resume(
            std::make_exception_ptr(RunFailure(ExitStatus::unreadableFile, error.what())));
    } catch (const std::exception& error) {
        ended_.resume(std::make_exception_ptr(RunFailure(ExitStatus::internal, error.what())));
    }
}

bool CaptionsRun::isFast() const {
    const auto* file = std::get_if<FileSource>(&command_.source);
    return file && file->fast;
}

std::string CaptionsRun::silenceHint() const {
    const std::int64_t minutes = *program_.settings.audioInactivityAutoStopMinutes;
    return minutes > 0
               ? " " + localized("So do %lld minutes of silence.", {std::to_string(minutes)})
               : "";
}

void CaptionsRun::interrupt() {
    output_.giveUp();
    interrupted_ = true;
    sound_.giveUp();
    if (session_)
        store().stopListening(LiveSessionControlTrigger::programmatic());
    ended_.resume(nullptr);
}

std::optional<HistoryRefinementRequest> CaptionsRun::refinement() const {
    return isWatched_ ? refinement_ : std::nullopt;
}

Task<ExitStatus> CaptionsRun::finish(ExitStatus status, std::string problem) {
    return output_.finish(news_ ? std::optional(news_->picture()) : std::nullopt, status,
                          std::move(problem));
}

} // namespace

Task<int> runCaptions(Program& program, const TerminalOptions& options, CaptionsCommand command) {
    CaptionsRun captions(program, options, command);
    std::optional<SignalWatch> signals;
    const auto watchSignals = [&] {
        signals.emplace(
            program.host, [&captions] { captions.interrupt(); },
            [&captions] { captions.beginAnew(); });
    };
    watchSignals();
    ExitStatus status = ExitStatus::ok;
    std::string problem;
    try {
        Task<bool> opening = captions.open();
        const bool isOpen = co_await opening;
        std::optional<int> over;
        if (isOpen && captions.mayAsk()) {
            signals.reset(); // the question and the download have their own
            Task<std::optional<int>> asking = offerTranslation(program, options, command);
            over = co_await asking;
            watchSignals();
        }
        if (over) {
            status = static_cast<ExitStatus>(*over);
        } else if (isOpen) {
            Task<void> running = captions.run();
            co_await running;
        }
    } catch (const RunFailure& failure) {
        problem = failure.what();
        status = failure.status;
    }
    Task<ExitStatus> finishing = captions.finish(status, std::move(problem));
    status = co_await finishing;
    signals.reset(); // a refinement that is given up is no failure, and no second Ctrl-C
    if (const auto request = captions.refinement(); request && status == ExitStatus::ok) {
        Task<void> refining = refineAfterSession(program, options, *request);
        co_await refining;
    }
    co_return static_cast<int>(status);
}

} // namespace tessarune
