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
      sound_(host_, request_.file,
             [this] { store().stopListening(LiveSessionControlTrigger::programmatic()); }),
      session_(application_, sound_.server(), ListeningSession::Options{{}, sound_.isFile()}),
      lifecycle_(host_, application_.logger, store().weak_from_this(), [this] { leave(); }),
      desktop_(application_.files, TESSARUNE_APPLICATION_ID,
               QCoreApplication::applicationFilePath().toStdString()),
      loginItem_(host_, application_.settings, desktop_) {
    signals.watch([this] { quit(); });
}

int DesktopProgram::run() {
    prepare();
    application_.logger.event("app.launch", {}, Importance::important);
    offerWindows();
    window_ = std::make_unique<CaptionWindow>(windowEnvironment());
    showFirst();
    makeTray();
    watchSystem();
    instance_.serve([this](const InstanceRequest& request) { handle(request); });
    // A file is there to be heard; what else is heard is the user's choice.
    if (request_.file)
        start(LiveSessionControlTrigger::programmatic());
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
    std::string recovered;
    if (const auto count = found.repairs.recoveredSessions.size(); count > 0)
        recovered =
            localized("已恢复 %lld 次中断的会话，可在历史记录中查看。", {std::to_string(count)});
    std::string news;
    for (const std::string& part :
         {obstacleText(found.obstacle), found.rebuiltIndexText(), recovered})
        news += (news.empty() || part.empty() ? "" : "\n") + part;
    tell(news);
}

Task<void> DesktopProgram::connect() {
    isConnecting_ = true;
    Task<std::string> connecting = sound_.connect();
    const std::string problem = co_await connecting;
    isConnecting_ = false;
    hasSound_ = problem.empty();
    if (hasSound_)
        store().refreshInputDevices();
    if (!hasSound_ || *notice_ == soundProblem_)
        tell(problem);
    soundProblem_ = problem;
}

/// Says what is wrong where there is none: a session would fetch it without a word.
bool DesktopProgram::hasSpeechModel() {
    const std::string problem = application_.speechModelProblem();
    if (!problem.empty())
        tell(problem + " " +
             localized("In a terminal, tessarune-terminal --model list shows the speech models; "
                       "--model NAME downloads one, or replaces a damaged one."));
    return problem.empty();
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
    if (hasSound_ && !isEnding_)
        store().startListening(trigger);
}

/// The windows go at once, the program when everything is saved.
void DesktopProgram::quit() {
    if (std::exchange(isEnding_, true))
        return;
    hideWindow();
    for (QWindow* const window : QGuiApplication::topLevelWindows())
        window->hide();
    tray_.reset();
    store().stopListening(LiveSessionControlTrigger::applicationShouldTerminate());
    if (lifecycle_.applicationShouldTerminate() ==
        TessaruneListeningLifecycleHandler::TerminateReply::now)
        leave();
}

void DesktopProgram::leave() {
    spawn(Executor::main(host_), endEventLoop(application_.refinement));
}

} // namespace tessarune
