#include "Terminal/CaptionsRun.h"

#include "Terminal/CaptionOutput.h"
#include "Terminal/CaptionSound.h"
#include "Terminal/EventLogFile.h"
#include "Terminal/OutputQueue.h"
#include "Terminal/RecogniserDelay.h"
#include "Terminal/RunFailure.h"
#include "Terminal/SessionNews.h"
#include "Terminal/SignalWatch.h"
#include "Terminal/TerminalCursor.h"
#include "Terminal/TranslationChoice.h"
#include "Tessarune/app/ListeningSession.h"
#include "Tessarune/history/HistoryItemLoader.h"
#include "Tessarune/session/LiveCaptionUserMessages.h"
#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace tessarune {

namespace {

/// How often the end of a stop is looked for, once the session is idle.
constexpr double lookAgainSeconds = 0.01;

/// Everything of one run, in one place that outlives all its callbacks.
class CaptionsRun {
  public:
    CaptionsRun(Program& program, const TerminalOptions& options, CaptionsCommand command);

    /// From the first sound to the saved session. Throws RunFailure.
    Task<void> run();
    /// Ends the session in order.
    void interrupt();
    /// After the terminal was somebody else's for a while.
    void beginAnew() { output_.beginAnew(); }
    /// The last words, and why the run failed, if it did. Gives the status to end with.
    Task<ExitStatus> finish(ExitStatus status, std::string problem);

  private:
    void overrideSettings();
    void prepare();
    void tellRepairs(const RecordingRepair::Report& report) const;
    std::string chooseTarget();
    void sayMissingTranslation(const std::string& notice);
    void checkEventLog();
    void makeSession();
    CaptionOutput makeOutput(const TerminalOptions& options);
    void refresh();
    void handleOutputChange();
    Task<void> written(const OutputQueue& queue);
    void handlePhase(LiveSessionPhase phase);
    Task<void> startListening();
    Task<void> stopListening();
    void tellSaved();
    void endWith(std::exception_ptr failure);
    bool isFast() const;
    std::string silenceHint() const;

    void say(const std::string& text) const { output_.status(text); }
    LiveTranscriptStore& store() { return session_->store(); }

    Program& program_;
    const CaptionsCommand command_;
    const std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); // for what the queues post
    OutputQueue out_;
    OutputQueue errors_;
    CaptionOutput output_;
    CaptionSound sound_;
    std::optional<EventLogFile> eventLog_;
    std::unique_ptr<ListeningSession> session_;
    std::unique_ptr<SessionNews> news_;
    std::unique_ptr<RecogniserDelay> delay_;
    OneShot<bool> started_;
    OneShot<std::exception_ptr> ended_; ///< null for a good end
    bool interrupted_ = false;
    bool isFinishing_ = false;
    bool givesUpOutput_ = false;
};

CaptionsRun::CaptionsRun(Program& program, const TerminalOptions& options, CaptionsCommand command)
    : program_(program),
      command_(std::move(command)),
      out_(STDOUT_FILENO,
           [this, &host = program.host, alive = std::weak_ptr(alive_)] {
               host.post([this, alive] {
                   if (!alive.expired())
                       handleOutputChange();
               });
           }),
      errors_(STDERR_FILENO, [] {}),
      output_(makeOutput(options)),
      sound_(program.host, {[this](const std::string& text) { say(text); },
                            [this](std::exception_ptr failure) { endWith(std::move(failure)); },
                            [this] { return delay_->heardSeconds(); }}),
      started_(Executor::main(program.host)),
      ended_(Executor::main(program.host)) {}

Task<void> CaptionsRun::run() {
    overrideSettings();
    try {
        co_await sound_.open(command_);
    } catch (const RunFailure&) {
        if (interrupted_)
            co_return; // it was given up and did not fail
        throw;
    }
    checkEventLog();
    prepare();
    makeSession();
    Task<void> starting = startListening();
    co_await starting;
    if (!ended_.hasValue()) {
        say(sound_.description() + silenceHint());
        sound_.begin();
        // A file that waits for the recogniser is always some seconds ahead of it.
        if (!isFast())
            delay_->watch([this](const std::string& text) { say(text); });
    }
    const std::exception_ptr failure = co_await ended_;
    delay_->endWatch();
    // A file is over before a slow computer has heard it; live sound that was stopped by hand is
    // not waited for longer than the session's own drain.
    Task<void> catchingUp = delay_->caughtUp([this] { return interrupted_; });
    co_await catchingUp;
    Task<void> stopping = stopListening();
    co_await stopping;
    tellSaved();
    if (eventLog_)
        eventLog_->close();
    if (failure)
        std::rethrow_exception(failure);
}

void CaptionsRun::overrideSettings() {
    AppSettings& settings = program_.settings;
    if (!command_.records)
        program_.recordNothing();
    // Whoever sits at a terminal says when it ends, unless it was said for good; a file has an end.
    if (std::holds_alternative<FileSource>(command_.source) ||
        !settings.audioInactivityAutoStopMinutes.isStored())
        program_.override(settings.audioInactivityAutoStopMinutes, std::int64_t{0});
    if (!command_.locale)
        return;
    for (const auto& option : ModelCatalog::recognitionOptions()) {
        if (option.localeIdentifier == *command_.locale)
            program_.override(settings.selectedRecognitionOptionID, option.id);
    }
}

/// Two programs must never write one catalog; what a crash left is put in order first.
void CaptionsRun::prepare() {
    // The sample is the program's own and no part of the user's history.
    if (sound_.isDemo())
        program_.recordNothing();
    try {
        const auto holder = program_.recordsSessions() ? program_.takeDataFolder() : std::nullopt;
        if (holder)
            throw RunFailure(
                ExitStatus::dataInUse,
                holder->program + " (process " + std::to_string(holder->processID) +
                    ") is recording already; --no-record captions without a recording");
    } catch (const std::system_error& error) {
        say(std::string("Nothing can be recorded: ") + error.what());
        program_.recordNothing();
    }
    tellRepairs(program_.prepare());
}

void CaptionsRun::tellRepairs(const RecordingRepair::Report& report) const {
    if (report.rebuiltIndex && !report.rebuiltIndex->keptAside.empty()) {
        say("The list of recordings could not be read and was made anew (" +
            std::to_string(report.rebuiltIndex->recordings) + " found); the old one is kept as " +
            report.rebuiltIndex->keptAside.filename().string() + ".");
    }
    for (const UUID& id : report.recoveredSessions)
        say("A session that had broken off was completed: --show " + id.text().substr(0, 8));
}

/// The session does not try again and again what cannot be translated.
std::string CaptionsRun::chooseTarget() {
    AppSettings& settings = program_.settings;
    const TranslationChoice choice =
        chooseTranslation(LiveTranslationSettingsSnapshot::current(settings), command_.target,
                          program_.translationModels.languages().list());
    if (!choice.failure.empty())
        throw RunFailure(ExitStatus::noModel, choice.failure);
    if (!choice.notice.empty())
        sayMissingTranslation(choice.notice);
    const auto backend = choice.target.empty() ? TranslationSupport::disabledBackendName
                                               : TranslationSupport::appleBackendName;
    program_.override(settings.translationBackend, std::string(backend));
    if (!choice.target.empty())
        program_.override(settings.translationTargetLanguage, choice.target);
    return choice.target;
}

/// Once for each choice that cannot be had, and not at every start.
void CaptionsRun::sayMissingTranslation(const std::string& notice) {
    constexpr std::string_view toldKey = "toldMissingTranslation";
    const AppSettings& settings = program_.settings;
    const SettingValue choice =
        *settings.translationBackend + " " + *settings.translationTargetLanguage;
    if (program_.defaults.value(toldKey) == choice)
        return;
    say(notice);
    program_.defaults.set(toldKey, choice);
}

void CaptionsRun::checkEventLog() {
    if (!command_.eventLog)
        return;
    eventLog_.emplace(program_.host, *command_.eventLog, command_.overwrites);
    eventLog_->check(sound_.file());
}

void CaptionsRun::makeSession() {
    const std::string target = chooseTarget();
    SessionDiagnostics diagnostics;
    diagnostics.appendASREvent = [this](const ASREvent& event) {
        if (eventLog_)
            eventLog_->append(event);
    };
    session_ = std::make_unique<ListeningSession>(
        program_, sound_.server(),
        ListeningSession::Options{std::move(diagnostics), sound_.isFile() || sound_.isDemo()});
    delay_ = std::make_unique<RecogniserDelay>(program_.host, store().liveTranscriber());
    news_ = std::make_unique<SessionNews>(
        *session_, program_.settings, target, program_.recordsSessions(),
        SessionNews::Handlers{[this] { refresh(); }, [this](const std::string& text) { say(text); },
                              [this](const std::string& text) { output_.progress(text); },
                              [this](LiveSessionPhase phase) { handlePhase(phase); }});
}

CaptionOutput CaptionsRun::makeOutput(const TerminalOptions& options) {
    if (options.json)
        return makeJSONOutput(
            out_.stream(), [this] { return program_.host.now(); }, options.quiet);
    if (!isScreen(STDOUT_FILENO))
        return makePlainOutput(out_.stream(), errors_.stream(), program_.host, options.quiet);
    TerminalCursor::guard(STDOUT_FILENO);
    return makeScreenOutput(out_.stream(), sizeOf(stdout), options.quiet);
}

/// Captions never wait for a slow reader: while one is behind, states that pass are left out; the
/// rows that have come meanwhile are printed when it has caught up.
void CaptionsRun::refresh() {
    if (!out_.isBehind())
        output_.update(news_->picture());
}

void CaptionsRun::handleOutputChange() {
    if (news_ && !isFinishing_)
        refresh();
    if (out_.failure() == EPIPE)
        interrupt(); // nobody reads any more
    else if (out_.failure() != 0)
        std::fputs("tessarune-terminal: the captions can no longer be written\n", errors_.stream());
}

void CaptionsRun::handlePhase(LiveSessionPhase phase) {
    if (phase == LiveSessionPhase::listening && eventLog_) {
        try {
            eventLog_->begin();
        } catch (const RunFailure&) {
            ended_.resume(std::current_exception());
        }
    }
    if (phase == LiveSessionPhase::listening || phase == LiveSessionPhase::failed)
        started_.resume(phase == LiveSessionPhase::listening);
    // It may end by itself, after a long silence.
    if (phase == LiveSessionPhase::stopping || phase == LiveSessionPhase::failed) {
        started_.resume(false);
        ended_.resume(nullptr);
    }
}

Task<void> CaptionsRun::startListening() {
    store().selectSource(sound_.source());
    store().startListening(LiveSessionControlTrigger::programmatic());
    const bool listening = co_await started_;
    if (!listening && store().startFailure() && *store().sessionPhase == LiveSessionPhase::failed)
        throw RunFailure::ofStart(store().startFailure());
}

Task<void> CaptionsRun::stopListening() {
    store().stopListening(LiveSessionControlTrigger::programmatic());
    while (store().isStopping()) {
        Task<bool> waiting = sleep(Executor::main(program_.host), lookAgainSeconds);
        co_await waiting;
    }
}

void CaptionsRun::tellSaved() {
    // Anything but the invitation to start again tells what could not be saved.
    const bool isWhole = *store().statusMessage == LiveCaptionUserMessages::idleTitle();
    if (!isWhole)
        say(*store().statusMessage);
    const auto& saved = store().recordingTracker().lastSavedID();
    if (!saved)
        return;
    const auto listed = HistoryItemLoader::load(program_.catalog, program_.files);
    const auto item = std::ranges::find(listed, *saved, &HistoryItem::id);
    if (item == listed.end())
        say("The session was too short to be kept.");
    else
        say((isWhole ? "Saved: --show " : "The sound alone is kept: --show ") +
            saved->text().substr(0, 8) + "  (" + item->filePath.value_or("") + ")");
}

void CaptionsRun::endWith(std::exception_ptr failure) {
    try {
        if (failure)
            std::rethrow_exception(failure);
        ended_.resume(nullptr);
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
    return minutes > 0 ? " So do " + std::to_string(minutes) + " minutes of silence." : "";
}

void CaptionsRun::interrupt() {
    givesUpOutput_ = isFinishing_;
    interrupted_ = true;
    sound_.giveUp();
    started_.resume(false);
    ended_.resume(nullptr);
}

/// Goes on when everything has been written, or never will be.
Task<void> CaptionsRun::written(const OutputQueue& queue) {
    while (!queue.isWritten() && !givesUpOutput_) {
        Task<bool> waiting = sleep(Executor::main(program_.host), lookAgainSeconds);
        co_await waiting;
    }
}

Task<ExitStatus> CaptionsRun::finish(ExitStatus status, std::string problem) {
    isFinishing_ = true;
    if (news_)
        output_.finish(news_->picture());
    Task<void> writing = written(out_);
    co_await writing;
    TerminalCursor::release();
    const int failure = out_.failure();
    if ((failure != 0 && failure != EPIPE) || !out_.isWritten()) {
        problem += (problem.empty() ? "" : "\n") + std::string("the output could not be written");
        if (failure != 0)
            problem += ": " + std::generic_category().message(failure);
        status = status == ExitStatus::ok ? ExitStatus::ioError : status;
    }
    if (!problem.empty())
        std::fprintf(errors_.stream(), "tessarune-terminal: %s\n", problem.c_str());
    Task<void> writingErrors = written(errors_);
    co_await writingErrors;
    co_return status;
}

} // namespace

Task<int> runCaptions(Program& program, const TerminalOptions& options, CaptionsCommand command) {
    CaptionsRun captions(program, options, std::move(command));
    const SignalWatch signals(
        program.host, [&captions] { captions.interrupt(); }, [&captions] { captions.beginAnew(); });
    ExitStatus status = ExitStatus::ok;
    std::string problem;
    try {
        Task<void> running = captions.run();
        co_await running;
    } catch (const RunFailure& failure) {
        problem = failure.what();
        status = failure.status;
    }
    Task<ExitStatus> finishing = captions.finish(status, std::move(problem));
    status = co_await finishing;
    co_return static_cast<int>(status);
}

} // namespace tessarune
