#include "Terminal/CaptionsRun.h"

#include "Terminal/CaptionOutput.h"
#include "Terminal/CaptionSound.h"
#include "Terminal/RunFailure.h"
#include "Terminal/SignalWatch.h"
#include "Terminal/TranslationChoice.h"
#include "Tessarune/audio/RecognitionPermissionGate.h"
#include "Tessarune/audio/SystemAudioCaptureError.h"
#include "Tessarune/history/RecordingRepair.h"
#include "Tessarune/platform/disk/DataFolderLock.h"
#include "Tessarune/platform/media/SwresampleConverter.h"
#include "Tessarune/session/LiveCaptionUserMessages.h"
#include "Tessarune/session/LiveSessionTranslation.h"
#include "Tessarune/session/LiveTranscriptStore.h"
#include "Tessarune/shell/DomainError.h"
#include "TessaruneCore/recognition/ASREventLog.h"
#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslationPresentationBuilder.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <system_error>
#include <utility>

namespace tessarune {

namespace {

/// How often the end of a stop is looked for, once the session is idle.
constexpr double lookAgainSeconds = 0.01;
/// A recogniser that is behind and gets no further for so long is not waited for.
constexpr double longestStandstillSeconds = 30;
constexpr double delayWatchSeconds = 1;

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
    void takeDataFolder();
    void tellRepairs();
    void overrideSettings();
    bool recordsSound() const;
    void recordNothing();
    void chooseTarget();
    void openEventLog();
    void makeStore();
    void observeStore();
    void observeTranslation();
    void tellTranslationStatus(const std::string& text);
    CaptionPicture picture() const;
    Task<void> startListening();
    [[noreturn]] void failStart();
    Task<void> catchUp();
    Task<void> stopListening();
    void tellSaved();
    void endWith(std::exception_ptr failure);
    double heardSeconds() const;
    double secondsBehind() const;
    void watchDelay();

    void say(const std::string& text) const { output_.status(text); }
    Host& host() const { return program_.host; }
    Executor main() const { return Executor::main(program_.host); }

    Program& program_;
    const CaptionsCommand command_;
    CaptionOutput output_;
    CaptionSound sound_;
    std::optional<DataFolderLock> dataFolder_;
    std::unique_ptr<ASREventLog::Writer> eventLog_;
    std::unique_ptr<PermissionsManager> permissions_;
    SpeechEngine engine_;
    std::unique_ptr<LiveSessionTranslation> translation_;
    std::shared_ptr<LiveTranscriptStore> store_;
    std::string target_; ///< empty: nothing is translated
    CaptionPreview preview_;
    bool translationIsOver_ = false;
    std::set<std::string> toldTranslationStatus_;
    OneShot<bool> started_;
    OneShot<std::string> ended_; ///< empty for a good end, else what went wrong
    bool interrupted_ = false;
    std::string lastStatus_;
    double delayWorthTelling_ = 5;
    DelayedCall delayWatch_;
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
                            [this] { return heardSeconds(); }}),
      started_(Executor::main(program.host)),
      ended_(Executor::main(program.host)) {}

Task<void> CaptionsRun::run() {
    overrideSettings();
    chooseTarget();
    if (recordsSound())
        takeDataFolder();
    openEventLog();
    Task<void> opening = sound_.open(command_);
    co_await opening;
    makeStore();
    Task<void> starting = startListening();
    co_await starting;
    if (!ended_.hasValue()) {
        say(sound_.description());
        sound_.begin();
        watchDelay();
    }
    const std::string problem = co_await ended_;
    delayWatch_.cancel();
    Task<void> catchingUp = catchUp();
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
        recordNothing();
    if (!command_.locale)
        return;
    for (const auto& option : ModelCatalog::recognitionOptions()) {
        if (option.localeIdentifier == *command_.locale)
            program_.override(settings.selectedRecognitionOptionID, option.id);
    }
}

/// A session with diagnostics records whatever the other setting says.
bool CaptionsRun::recordsSound() const {
    return *program_.settings.recordWhileCaptioning || *program_.settings.sessionDiagnosticsEnabled;
}

void CaptionsRun::recordNothing() {
    program_.override(program_.settings.recordWhileCaptioning, false);
    program_.override(program_.settings.sessionDiagnosticsEnabled, false);
}

/// What cannot be translated is said now and once; the session then does not try again and again.
void CaptionsRun::chooseTarget() {
    AppSettings& settings = program_.settings;
    const TranslationChoice choice =
        chooseTranslation(LiveTranslationSettingsSnapshot::current(settings), command_.target,
                          program_.translationModels.languages().list());
    if (!choice.failure.empty())
        throw RunFailure(ExitStatus::noModel, choice.failure);
    if (!choice.notice.empty())
        say(choice.notice);
    target_ = choice.target;
    const auto backend = target_.empty() ? TranslationSupport::disabledBackendName
                                         : TranslationSupport::appleBackendName;
    program_.override(settings.translationBackend, std::string(backend));
    if (!target_.empty())
        program_.override(settings.translationTargetLanguage, target_);
}

/// Two programs must never write one catalog; what a crash left is put in order first.
void CaptionsRun::takeDataFolder() {
    try {
        auto taken = DataFolderLock::take(program_.paths, "tessarune-terminal");
        if (const auto* holder = std::get_if<DataFolderLock::Holder>(&taken)) {
            throw RunFailure(
                ExitStatus::dataInUse,
                holder->program + " (process " + std::to_string(holder->processID) +
                    ") is recording already; --no-record captions without a recording");
        }
        dataFolder_.emplace(std::move(std::get<DataFolderLock>(taken)));
    } catch (const std::system_error& error) {
        say(std::string("Nothing can be recorded: ") + error.what());
        recordNothing();
        return;
    }
    tellRepairs();
}

void CaptionsRun::tellRepairs() {
    RecordingRepair repair(program_.files, program_.catalog, program_.logger);
    const RecordingRepair::Report report = repair.runAtLaunch();
    if (report.rebuiltIndex && !report.rebuiltIndex->keptAside.empty()) {
        say("The list of recordings could not be read and was made anew (" +
            std::to_string(report.rebuiltIndex->recordings) + " found); the old one is kept as " +
            report.rebuiltIndex->keptAside.filename().string() + ".");
    }
    for (const UUID& id : report.recoveredSessions)
        say("A session that had broken off was completed: --show " + id.text().substr(0, 8));
}

void CaptionsRun::openEventLog() {
    if (!command_.eventLog)
        return;
    eventLog_ = ASREventLog::Writer::open(host(), *command_.eventLog);
    if (!eventLog_)
        throw RunFailure(ExitStatus::cannotWrite, "cannot write " + command_.eventLog->string());
}

void CaptionsRun::makeStore() {
    SoundServer& server = sound_.server();
    permissions_ = std::make_unique<PermissionsManager>(
        host(), server, program_.defaults, SystemAuthorization::ofServer(host(), server));
    SessionDiagnostics diagnostics;
    diagnostics.appendASREvent = [this](const ASREvent& event) {
        if (eventLog_)
            eventLog_->append(event);
    };
    auto recorder =
        AudioSessionRecorder::create(host(), program_.files, program_.logger,
                                     program_.catalog.forRecorder(), makeSwresampleConverter);
    SpeechPlatform speech = program_.speechPlatform();
    engine_ = speech.engine;
    translation_ = std::make_unique<LiveSessionTranslation>(LiveSessionTranslation::Environment{
        host(), program_.settings, program_.logger, program_.translation});
    store_ = LiveTranscriptStore::make({.speech = std::move(speech),
                                        .sound = server,
                                        .files = program_.files,
                                        .settings = program_.settings,
                                        .permissions = *permissions_,
                                        .catalog = program_.catalog,
                                        .recorder = std::move(recorder),
                                        .compressor = program_.compressor,
                                        .translation = translation_->steps(),
                                        .diagnostics = std::move(diagnostics),
                                        .scheduleHistoryRefinement = [](const auto&) {},
                                        .returnMemory = [] { malloc_trim(0); }});
    translation_->attach(store_);
    observeStore();
    observeTranslation();
}

void CaptionsRun::observeStore() {
    store_->captionDisplayRefresh.onDidChange([this](const std::string& reason) {
        translationIsOver_ =
            translationIsOver_ || reason.starts_with("listen.stop.translationDrain.");
        output_.update(picture());
    });
    store_->statusMessage.onDidChange([this](const std::string& text) {
        const bool isNews = std::exchange(lastStatus_, text) != text;
        if (isNews && !text.empty() && *store_->sessionPhase != LiveSessionPhase::idle)
            say(text);
    });
    store_->presentedError.onDidChange([this](const std::string& text) {
        if (*store_->isListening)
            say(text);
    });
    store_->audioCompressProgress.onDidChange([this](const std::optional<double>& done) {
        if (done)
            output_.progress(std::to_string(static_cast<int>(*done * 100)) + " %");
    });
    store_->sessionPhase.onDidChange([this](LiveSessionPhase phase) {
        if (phase == LiveSessionPhase::listening || phase == LiveSessionPhase::failed)
            started_.resume(phase == LiveSessionPhase::listening);
        // It may end by itself, after a long silence.
        if (phase == LiveSessionPhase::stopping || phase == LiveSessionPhase::failed) {
            started_.resume(false);
            ended_.resume("");
        }
    });
}

void CaptionsRun::observeTranslation() {
    // The source of a preview is known for certain only at the moment at which it arrives.
    LiveTranscriptTranslation& translation = translation_->translation();
    translation.ghostTranslationText().onDidChange([this, &translation](const std::string& text) {
        const std::string visible = TranslationPresentationBuilder::visibleGhostText(
            text, *program_.settings.softTranslationEnabled);
        preview_ = visible.empty() ? CaptionPreview()
                                   : CaptionPreview{visible, translation.runtime().ghostSource()};
    });
    store_->translationStatusMessage.onDidChange(
        [this](const std::string& text) { tellTranslationStatus(text); });
}

void CaptionsRun::tellTranslationStatus(const std::string& text) {
    // Loading a model is no news. Of texts that differ only in a number the first is enough.
    if (text.empty() || store_->translationPreparationDisplayState->preparing)
        return;
    std::string kind;
    for (const char32_t codePoint : Text::codePoints(text)) {
        if (!Text::isLetterOrNumber(codePoint) || Text::isLetter(codePoint))
            Text::append(kind, codePoint);
    }
    if (toldTranslationStatus_.insert(kind).second)
        say(translationFailureText(text, target_));
}

CaptionPicture CaptionsRun::picture() const {
    return {store_->core, target_, !target_.empty() && !translationIsOver_, preview_};
}

Task<void> CaptionsRun::startListening() {
    store_->selectSource(sound_.source());
    store_->startListening(LiveSessionControlTrigger::programmatic());
    const bool listening = co_await started_;
    if (!listening && store_->startFailure() && *store_->sessionPhase == LiveSessionPhase::failed)
        failStart();
}

/// Gives each failure of a start the status under which scripts can tell it apart.
void CaptionsRun::failStart() {
    try {
        std::rethrow_exception(store_->startFailure());
    } catch (const SystemAudioCaptureError& error) {
        throw RunFailure(ExitStatus::noSoundServer, error.what());
    } catch (const SoundServerError& error) {
        throw RunFailure(ExitStatus::noSoundServer, error.what());
    } catch (const DomainError& error) {
        const bool refused = error.domain() == RecognitionPermissionGate::errorDomain;
        throw RunFailure(refused ? ExitStatus::notAllowed : ExitStatus::noSoundServer,
                         error.what());
    } catch (const std::system_error& error) {
        throw RunFailure(ExitStatus::cannotWrite, error.what());
    } catch (const std::exception& error) {
        throw RunFailure(ExitStatus::noModel,
                         std::string(error.what()) +
                             "\n--model list shows the speech models, --model NAME downloads one, "
                             "also in place of a damaged one; --list and --show need none");
    }
}

Task<void> CaptionsRun::stopListening() {
    store_->stopListening(LiveSessionControlTrigger::programmatic());
    while (store_->isStopping()) {
        Task<bool> waiting = sleep(main(), lookAgainSeconds);
        co_await waiting;
    }
    if (eventLog_)
        eventLog_->close();
}

void CaptionsRun::tellSaved() {
    // Anything but the invitation to start again tells what could not be saved.
    if (*store_->statusMessage != LiveCaptionUserMessages::idleTitle())
        say(*store_->statusMessage);
    const auto& saved = store_->recordingTracker().lastSavedID();
    if (!saved)
        return;
    const auto recording = program_.catalog.recording(*saved);
    if (recording)
        say("Saved: --show " + saved->text().substr(0, 8) + "  (" + recording->filePath + ")");
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

/// How far the recogniser has come. Called from the file's queue too.
double CaptionsRun::heardSeconds() const {
    const PerfStats stats = store_->liveTranscriber().perfStats();
    const auto converted = stats.find("convertedAudioSeconds");
    return converted == stats.end() ? 0 : converted->second - secondsBehind();
}

double CaptionsRun::secondsBehind() const {
    const PerfStats stats = store_->liveTranscriber().perfStats();
    const auto behind = stats.find("secondsBehind");
    return behind == stats.end() ? 0 : behind->second;
}

/// A delay that grows is told each time that it has doubled. A file that waits for the recogniser
/// is always some seconds ahead of it.
void CaptionsRun::watchDelay() {
    const auto* file = std::get_if<FileSource>(&command_.source);
    if (ended_.hasValue() || (file && file->fast))
        return;
    if (const double behind = secondsBehind(); behind >= delayWorthTelling_) {
        say("The captions are " + std::to_string(static_cast<int>(behind)) +
            " s behind: this computer is too slow for the speech model.");
        delayWorthTelling_ = 2 * behind;
    }
    delayWatch_ = host().after(delayWatchSeconds, [this] { watchDelay(); });
}

/// A file is over before a slow computer has heard it; live sound that was stopped by hand is not
/// waited for longer than the session's own drain.
Task<void> CaptionsRun::catchUp() {
    double least = secondsBehind();
    double movedAt = host().now();
    while (!interrupted_ && secondsBehind() > 0 &&
           host().now() - movedAt < longestStandstillSeconds) {
        Task<bool> waiting = sleep(main(), lookAgainSeconds);
        co_await waiting;
        if (secondsBehind() < least) {
            least = secondsBehind();
            movedAt = host().now();
        }
    }
}

void CaptionsRun::interrupt() {
    if (std::exchange(interrupted_, true)) {
        std::fputs("\033[0m\033[?25h\n", stderr);
        std::_Exit(static_cast<int>(ExitStatus::stoppedTwice));
    }
    started_.resume(false);
    ended_.resume("");
}

void CaptionsRun::finishOutput() {
    if (store_)
        output_.finish(picture());
}

} // namespace

Task<int> runCaptions(Program& program, const TerminalOptions& options, CaptionsCommand command) {
    CaptionsRun captions(program, options, std::move(command));
    SignalWatch signals(program.host, [&captions] { captions.interrupt(); });
    program.logger.bootstrap(program.bootstrapFields());
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
