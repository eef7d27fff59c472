#include "Terminal/TerminalSession.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/RunFailure.h"
#include "Terminal/RunPreparation.h"
#include "Tessarune/audio/MediaFile.h"
#include "TessaruneCore/text/Localization.h"

#include <utility>
#include <variant>

namespace tessarune {

TerminalSession::TerminalSession(Program& program, const TerminalOptions& options,
                                 CaptionsCommand command)
    : program_(program),
      command_(std::move(command)),
      output_(program.host, options, {[this] { update(); }, [this] { interrupt(); }}),
      translation_(
          program, command_.target,
          options.quiet ? std::function<void(const std::string&)>()
                        : [this](const std::string& text) { say(text); }),
      sound_(program.host, {[this](const std::string& text) { say(text); },
                            [this](std::exception_ptr failure) { endWith(std::move(failure)); },
                            [this] { return delay_->processedSeconds(); }}),
      ended_(Executor::main(program.host)) {}

Task<bool> TerminalSession::open() {
    RunPreparation::overrideSettings(program_, command_);
    try {
        co_await sound_.open(command_);
    } catch (const RunFailure&) {
        if (interrupted_)
            co_return false; // cancelled, which is not a failure
        throw;
    }
    checkEventLog();
    RunPreparation::checkModel(program_);
    co_return true;
}

Task<void> TerminalSession::run() {
    // The sample speech is part of the program and does not belong in the user's history.
    if (sound_.isDemo())
        program_.recording.recordNothing();
    const bool mayRecord = RunPreparation::prepareToRecord(program_, command_, output_);
    makeSession();
    if (!interrupted_)
        co_await startListening();
    if (!ended_.hasValue()) {
        say(bothSentences(sound_.description(), silenceHint()));
        sound_.begin();
        watchDelay();
    }
    const std::exception_ptr failure = co_await ended_;
    delay_->endWatch();
    // A file may end before a slow computer has processed it, so the run waits. A stop by the user
    // ends the wait; `stop` then waits only a limited time.
    Task<void> catchingUp = delay_->caughtUp([this] { return interrupted_; });
    co_await catchingUp;
    delay_->endProgress();
    co_await session_->stop();
    const bool isSaved = news_->reportSaved(program_.catalog, program_.files);
    if (eventLog_)
        eventLog_->close();
    if (failure)
        std::rethrow_exception(failure);
    if (!isSaved || (!mayRecord && command_.records))
        throw RunFailure(ExitStatus::cannotWrite, ""); // already reported
}

/// Reports the delay. For a file that is read faster than real time it reports the progress
/// instead, because the recogniser is always some seconds behind such a file.
void TerminalSession::watchDelay() {
    const auto* file = std::get_if<FileSource>(&command_.source);
    if (!file || !file->fast)
        delay_->watch([this](const std::string& text) { say(text); });
    else if (const auto duration = sound_.fastDuration(); duration && *duration > 0)
        delay_->watchProgress(*duration,
                              [this](int percent) { output_.progress(percentText(percent)); });
}

void TerminalSession::checkEventLog() {
    if (!command_.eventLog)
        return;
    eventLog_.emplace(program_.host, *command_.eventLog, command_.overwrites);
    eventLog_->check(sound_.file());
}

void TerminalSession::makeSession() {
    const std::string target = translation_.choose();
    session_ = std::make_unique<ListeningSession>(
        program_, sound_.server(),
        ListeningSession::Options{[this](const ASREvent& event, double t) {
                                      if (eventLog_)
                                          eventLog_->append(event, t);
                                  },
                                  sound_.isFile() || sound_.isDemo(),
                                  [this](const auto& request) { refinement_ = request; }});
    delay_ = std::make_unique<RecogniserDelay>(program_.host, store().liveTranscriber());
    news_ = std::make_unique<SessionNews>(
        store().view(), target, program_.recording.recordsSessions(),
        SessionNews::Handlers{[this] { update(); }, [this](const std::string& text) { say(text); },
                              [this](const std::string& text) { output_.progress(text); },
                              [this](LiveSessionPhase phase) { handlePhase(phase); }});
    translation_.follow([this](std::string changed) { news_->setTarget(std::move(changed)); });
}

void TerminalSession::update() {
    if (news_)
        output_.update(news_->picture());
}

void TerminalSession::handlePhase(LiveSessionPhase phase) {
    if (phase == LiveSessionPhase::listening && eventLog_) {
        try {
            eventLog_->begin();
        } catch (const RunFailure&) {
            ended_.resume(std::current_exception());
        }
    }
    // A session may also end by itself, after a long silence.
    if (phase == LiveSessionPhase::stopping || phase == LiveSessionPhase::failed)
        ended_.resume(nullptr);
}

Task<void> TerminalSession::startListening() {
    // Before the recorder starts, so that a log that cannot be written leaves no recording.
    if (eventLog_)
        eventLog_->open();
    const bool listens = co_await session_->listen(sound_.source());
    const SessionView& view = store().view();
    if (!listens && view.startFailure && *view.sessionPhase == LiveSessionPhase::failed)
        throw RunFailure::ofStart(view.startFailure);
}

void TerminalSession::endWith(std::exception_ptr failure) {
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

std::string TerminalSession::silenceHint() const {
    const std::int64_t minutes = *program_.settings.audioInactivityAutoStopMinutes;
    return minutes > 0
               ? localized("It also ends after %lld min of silence.", {std::to_string(minutes)})
               : "";
}

void TerminalSession::interrupt() {
    output_.giveUp();
    interrupted_ = true;
    sound_.giveUp();
    if (session_)
        store().stopListening(LiveSessionControlTrigger::programmatic());
    ended_.resume(nullptr);
}

Task<ExitStatus> TerminalSession::finish(ExitStatus status, std::string problem) {
    return output_.finish(news_ ? std::optional(news_->picture()) : std::nullopt, status,
                          std::move(problem));
}

} // namespace tessarune
