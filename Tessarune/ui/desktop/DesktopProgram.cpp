#include "Tessarune/ui/desktop/DesktopProgram.h"

#include "TessaruneCore/text/Localization.h"

#include <QGuiApplication>
#include <QWindow>
#include <utility>

namespace tessarune {

namespace {

constexpr double lookAgainSeconds = 0.01;

std::string obstacleText(const RecordingGate::Obstacle& obstacle) {
    if (obstacle.holder)
        return localized("%@（进程 %lld）正在录音；这里的字幕不会保存。",
                         {obstacle.holder->program, std::to_string(obstacle.holder->processID)});
    if (!obstacle.failure.empty())
        return localized("Nothing can be recorded: %@", {obstacle.failure});
    return obstacle.doubt;
}

/// `quit` would ask the window first, which is hidden and declines.
Task<void> endEventLoop(HistoryRefinementService& refinement) {
    Task<void> ending = refinement.end();
    co_await ending;
    QCoreApplication::exit(0);
}

} // namespace

DesktopProgram::DesktopProgram(TerminationSignals& signals, SingleInstance& instance,
                               DesktopRequest request)
    : request_(std::move(request)),
      instance_(instance),
      application_(host_, "tessarune"),
      sound_(host_, [this] { spawn(Executor::main(host_), leaveFile(std::nullopt)); }),
      session_(application_, sound_, {}),
      lifecycle_(host_, application_.logger, store().weak_from_this(), [this] { leave(); }),
      desktop_(application_.files, TESSARUNE_APPLICATION_ID,
               QCoreApplication::applicationFilePath().toStdString()),
      loginItem_(host_, application_.settings, desktop_) {
    signals.watch([this] { quit(); });
}

int DesktopProgram::run() {
    application_.logger.event("app.launch", {}, Importance::important);
    prepare();
    offerWindows();
    window_ = std::make_unique<CaptionWindow>(windowEnvironment());
    showFirst();
    watchSystem();
    instance_.serve([this](const InstanceRequest& request) { handle(request); });
    // A file is there to be heard; what else is heard is the user's choice.
    if (request_.file)
        captionFile(*request_.file);
    else
        spawn(Executor::main(host_), connect());
    for (const DesktopAction action : request_.actions)
        perform(action);
    return QGuiApplication::exec();
}

/// Where nothing can be recorded, captions go on and the user hears why.
void DesktopProgram::prepare() {
    const Application::Preparation found = application_.prepareToRecord();
    if (found.obstacle.holder)
        application_.prepare();
    application_.recording.onObstacle = [this](const auto& obstacle) {
        tell(obstacleText(obstacle));
    };
    tell(obstacleText(found.obstacle));
    tell(found.rebuiltIndexText());
    if (const auto count = found.repairs.recoveredSessions.size(); count > 0)
        tell(localized("已恢复 %lld 次中断的会话，可在历史记录中查看。", {std::to_string(count)}));
}

Task<void> DesktopProgram::connect() {
    isConnecting_ = true;
    Task<std::string> connecting = sound_.connectOrSay();
    const std::string problem = co_await connecting;
    isConnecting_ = false;
    hasSound_ = problem.empty();
    if (hasSound_)
        store().refreshInputDevices();
    withdraw(soundProblem_);
    tell(problem);
    soundProblem_ = problem;
}

/// Where there is none, leads to where it can be had: a session would fetch it without a word.
bool DesktopProgram::hasSpeechModel() {
    const std::string problem = application_.speechModelProblem();
    withdraw(modelProblem_);
    modelProblem_ = problem;
    if (problem.empty())
        return true;
    tell(problem);
    windows_.show(DesktopWindows::Kind::settings, "recognition");
    return false;
}

void DesktopProgram::start(const LiveSessionControlTrigger& trigger) {
    if (!*store().view().isListening)
        toggle(trigger);
}

void DesktopProgram::toggle(const LiveSessionControlTrigger& trigger) {
    if (welcome_)
        welcome_->close();
    if (!*store().view().isListening && !hasSpeechModel())
        return;
    if (hasSound_)
        store().toggleListening(trigger);
    else
        spawn(Executor::main(host_), connectAndStart(trigger));
}

Task<void> DesktopProgram::connectAndStart(LiveSessionControlTrigger trigger) {
    if (std::exchange(startsWhenConnected_, true))
        co_return;
    if (!isConnecting_) {
        Task<void> connecting = connect();
        co_await connecting;
    }
    while (isConnecting_) {
        Task<bool> waiting = sleep(Executor::main(host_), lookAgainSeconds);
        co_await waiting;
    }
    startsWhenConnected_ = false;
    if (!hasSound_ && sound_.isFile())
        listenToComputer(); // the file cannot be heard
    else if (hasSound_ && !isEnding_)
        store().startListening(trigger);
}

void DesktopProgram::captionFile(const std::filesystem::path& file) {
    if (!std::exchange(wantedFile_, file))
        spawn(Executor::main(host_), beginFile());
}

/// What is heard until now is saved first.
Task<void> DesktopProgram::beginFile() {
    Task<void> stopping = session_.stop();
    co_await stopping;
    const std::filesystem::path file = *std::exchange(wantedFile_, std::nullopt);
    if (isEnding_)
        co_return;
    if (!sound_.isFile())
        computerSource_ = *store().view().selectedSource;
    store().selectSource(AudioSource::systemAudio()); // the file has no other
    session_.setForgetsPermissions(true);
    sound_.playFile(file);
    hasSound_ = false;
    start(LiveSessionControlTrigger::programmatic());
}

/// Where the user has chosen a source in place of the file, it is heard at once.
Task<void> DesktopProgram::leaveFile(std::optional<AudioSource> source) {
    const bool goesOn = source && *store().view().isListening;
    Task<void> stopping = session_.stop();
    co_await stopping;
    if (wantedFile_ || isEnding_)
        co_return;
    listenToComputer();
    store().selectSource(source.value_or(computerSource_));
    if (goesOn)
        start(LiveSessionControlTrigger::sourceSwitch());
}

void DesktopProgram::listenToComputer() {
    sound_.listenToComputer();
    session_.setForgetsPermissions(false);
    hasSound_ = sound_.state() == SoundServerState::connected;
}

void DesktopProgram::selectSource(const AudioSource& source) {
    if (sound_.isFile())
        spawn(Executor::main(host_), leaveFile(source));
    else
        store().selectSource(source);
}

/// The windows go at once, the program when everything is saved.
void DesktopProgram::quit() {
    if (std::exchange(isEnding_, true))
        return;
    instance_.refuse();
    hideWindow();
    for (QWindow* const window : QGuiApplication::topLevelWindows())
        window->hide();
    if (tray_)
        tray_->hide();
    if (lifecycle_.applicationShouldTerminate() ==
        TessaruneListeningLifecycleHandler::TerminateReply::now)
        leave();
}

void DesktopProgram::leave() {
    lifecycle_.handleApplicationWillTerminate();
    spawn(Executor::main(host_), endEventLoop(application_.refinement));
}

} // namespace tessarune
