#include "Terminal/CaptionsRun.h"

#include "Terminal/CaptionOutput.h"
#include "Terminal/CaptionSound.h"
#include "Terminal/RecogniserDelay.h"
#include "Terminal/RunFailure.h"
#include "Terminal/SessionNews.h"
#include "Terminal/SignalWatch.h"
#include "Terminal/TranslationChoice.h"
#include "Tessarune/app/ListeningSession.h"
#include "Tessarune/history/HistoryItemLoader.h"
#include "Tessarune/session/LiveCaptionUserMessages.h"
#include "TessaruneCore/recognition/ASREventLog.h"
#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
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
    /// The first time the session is ended in order, the second time the program at once.
    void interrupt();
    void finishOutput();

  private:
    void overrideSettings();
    void prepare();
    void tellRepairs(const RecordingRepair::Report& report) const;
    std::string chooseTarget();
    void openEventLog();
    void makeSession();
    void handlePhase(LiveSessionPhase phase);
    Task<void> startListening();
    Task<void> stopListening();
    void tellSaved();
    void endWith(std::exception_ptr failure);
    bool isFast() const;

    void say(const std::string& text) const { output_.status(text); }
    LiveTranscriptStore& store() { return session_->store(); }

    Program& program_;
    const CaptionsCommand command_;
    CaptionOutput output_;
    CaptionSound sound_;
    std::unique_ptr<ASREventLog::Writer> eventLog_;
    std::unique_ptr<ListeningSession> session_;
    std::unique_ptr<SessionNews> news_;
    std::unique_ptr<RecogniserDelay> delay_;
    OneShot<bool> started_;
    OneShot<std::string> ended_; ///< empty for a good end, else what went wrong
    bool interrupted_ = false;
};

CaptionOutput makeOutput(Program& program, const TerminalOptions& options) {
    if (options.json)
        return makeJSONOutput(
            stdout, [&program] { return program.host.now(); }, options.quiet);
    if (isatty(STDOUT_FILENO))
        return makeScreenOutput(stdout, sizeOf(stdout), options.quiet);
    return makePlainOutput(stdout, stderr, program.host, options.quiet);
}

CaptionsRun::CaptionsRun(Program& program, const TerminalOptions& options, CaptionsCommand command)
    : program_(program),
      command_(std::move(command)),
      output_(makeOutput(program, options)),
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
    prepare();
    openEventLog();
    makeSession();
    Task<void> starting = startListening();
    co_await starting;
    if (!ended_.hasValue()) {
        say(sound_.description());
        sound_.begin();
        // A file that waits for the recogniser is always some seconds ahead of it.
        if (!isFast())
            delay_->watch([this](const std::string& text) { say(text); });
    }
    const std::string problem = co_await ended_;
    delay_->endWatch();
    // A file is over before a slow computer has heard it; live sound that was stopped by hand is
    // not waited for longer than the session's own drain.
    Task<void> catchingUp = delay_->caughtUp([this] { return interrupted_; });
    co_await catchingUp;
    Task<void> stopping = stopListening();
    co_await stopping;
    tellSaved();
    if (!problem.empty())
        throw RunFailure(ExitStatus::internal, problem);
}

void CaptionsRun::overrideSettings() {
    AppSettings& settings = program_.settings;
    if (!command_.records)
        program_.recordNothing();
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

/// What cannot be translated is said now and once; the session then does not try again and again.
std::string CaptionsRun::chooseTarget() {
    AppSettings& settings = program_.settings;
    const TranslationChoice choice =
        chooseTranslation(LiveTranslationSettingsSnapshot::current(settings), command_.target,
                          program_.translationModels.languages().list());
    if (!choice.failure.empty())
        throw RunFailure(ExitStatus::noModel, choice.failure);
    if (!choice.notice.empty())
        say(choice.notice);
    const auto backend = choice.target.empty() ? TranslationSupport::disabledBackendName
                                               : TranslationSupport::appleBackendName;
    program_.override(settings.translationBackend, std::string(backend));
    if (!choice.target.empty())
        program_.override(settings.translationTargetLanguage, choice.target);
    return choice.target;
}

void CaptionsRun::openEventLog() {
    if (!command_.eventLog)
        return;
    eventLog_ = ASREventLog::Writer::open(program_.host, *command_.eventLog);
    if (!eventLog_)
        throw RunFailure(ExitStatus::cannotWrite, "cannot write " + command_.eventLog->string());
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
        SessionNews::Handlers{[this] { output_.update(news_->picture()); },
                              [this](const std::string& text) { say(text); },
                              [this](const std::string& text) { output_.progress(text); },
                              [this](LiveSessionPhase phase) { handlePhase(phase); }});
}

void CaptionsRun::handlePhase(LiveSessionPhase phase) {
    if (phase == LiveSessionPhase::listening || phase == LiveSessionPhase::failed)
        started_.resume(phase == LiveSessionPhase::listening);
    // It may end by itself, after a long silence.
    if (phase == LiveSessionPhase::stopping || phase == LiveSessionPhase::failed) {
        started_.resume(false);
        ended_.resume("");
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
    if (eventLog_)
        eventLog_->close();
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
        ended_.resume("");
    } catch (const std::exception& error) {
        ended_.resume(error.what());
    }
}

bool CaptionsRun::isFast() const {
    const auto* file = std::get_if<FileSource>(&command_.source);
    return file && file->fast;
}

void CaptionsRun::interrupt() {
    if (std::exchange(interrupted_, true)) {
        std::fputs("\033[0m\033[?25h\n", stderr);
        std::_Exit(static_cast<int>(ExitStatus::stoppedTwice));
    }
    sound_.giveUp();
    started_.resume(false);
    ended_.resume("");
}

void CaptionsRun::finishOutput() {
    if (news_)
        output_.finish(news_->picture());
}

} // namespace

Task<int> runCaptions(Program& program, const TerminalOptions& options, CaptionsCommand command) {
    CaptionsRun captions(program, options, std::move(command));
    SignalWatch signals(program.host, [&captions] { captions.interrupt(); });
    ExitStatus status = ExitStatus::ok;
    std::string problem;
    try {
        Task<void> running = captions.run();
        co_await running;
    } catch (const RunFailure& failure) {
        problem = failure.what();
        status = failure.status;
    }
    captions.finishOutput();
    if (!problem.empty())
        std::fprintf(stderr, "tessarune-terminal: %s\n", problem.c_str());
    co_return static_cast<int>(status);
}

} // namespace tessarune
