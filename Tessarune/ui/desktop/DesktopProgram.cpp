#include "Tessarune/ui/desktop/DesktopProgram.h"

#include "Tessarune/ui/desktop/DesktopHistory.h"
#include "TessaruneCore/text/Localization.h"

#include <QGuiApplication>
#include <QWindow>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace tessarune {

namespace {

std::string obstacleText(const RecordingGate::Obstacle& obstacle) {
    if (obstacle.holder)
        return localized("%@正在录音，因此这里的字幕不会保存。", {obstacle.holder->text()});
    if (!obstacle.failure.empty())
        return localized("Nothing can be recorded: %@", {obstacle.failure});
    return obstacle.doubt;
}

/// For the report of a memory alarm: an open window may explain the usage.
std::vector<IdleMemorySentinel::Window> openWindows() {
    std::vector<IdleMemorySentinel::Window> windows;
    for (const QWindow* const window : QGuiApplication::topLevelWindows())
        windows.push_back({.title = window->title().toStdString(),
                           .isVisible = window->isVisible(),
                           .isKeyWindow = window == QGuiApplication::focusWindow(),
                           .isMainWindow = window->isActive(),
                           .isMiniaturized = window->windowStates().testFlag(Qt::WindowMinimized),
                           .level = window->flags().testFlag(Qt::WindowStaysOnTopHint) ? 1 : 0,
                           .width = static_cast<double>(window->width()),
                           .height = static_cast<double>(window->height())});
    return windows;
}

/// Exits the event loop without `QCoreApplication::quit`, which would first ask the windows to
/// close. The hidden windows would refuse.
Task<void> endEventLoop(HistoryRefinementService& refinement, HistoryExport& exports,
                        Desktop& desktop) {
    Task<void> ending = refinement.end();
    co_await ending;
    Task<void> endingExports = exports.end();
    co_await endingExports;
    if (*exports.unfinishedFiles() > 0)
        desktop.notify("Tessarune",
                       localized("Tessarune was closed before the export was complete."));
    QCoreApplication::exit(0);
}

} // namespace

DesktopProgram::DesktopProgram(TerminationSignals& signals, SingleInstance& instance,
                               DesktopRequest request)
    : request_(std::move(request)),
      instance_(instance),
      application_(host_, "tessarune"),
      sound_(host_),
      session_(
          application_, sound_,
          {.windows = openWindows, .openSettings = [this](auto) { desktop_.openSoundSettings(); }}),
      listening_({host_, sound_, session_, notices_, [this] { return hasSpeechModel(); }}),
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
    for (const DesktopAction action : request_.actions)
        perform(action);
    // Files on the command line are captioned at once; other sound waits for the user's command.
    if (request_.files.empty())
        listening_.connect();
    else
        listening_.captionFiles(request_.files);
    const int status = QGuiApplication::exec();
    if (store().isStopping()) {
        // Saving takes longer than the program may wait. The threads that save still use objects
        // that an orderly exit would destroy; the next start completes the unfinished work.
        application_.compressor.endLeftover();
        application_.logger.flush();
        std::_Exit(status);
    }
    return status;
}

/// Prepares the program to record. If nothing can be recorded, captions still work and the user is
/// told why.
void DesktopProgram::prepare() {
    const Application::Preparation preparation = application_.prepareToRecord();
    // If another program has the data folder, the start-up services have not run yet.
    if (preparation.obstacle.holder)
        application_.prepare();
    application_.recording.onDecision = [this](const RecordingGate::Obstacle& obstacle) {
        tellObstacle(obstacle);
    };
    tellObstacle(preparation.obstacle);
    observations_.followChanges(
        application_.settings.recordWhileCaptioning.published(),
        [this](bool) { notices_.tell(DesktopNotices::Topic::recording, ""); });
    application_.onDownloadTrouble = [this](const DownloadTrouble& trouble) {
        const auto seconds = std::lround(std::ceil(trouble.secondsToNextTry));
        downloadTrouble_ =
            localized("下载中断：%@。%lld 秒后重试。", {trouble.reason, std::to_string(seconds)});
    };
    notices_.tell(preparation.rebuiltIndexText());
    notices_.tell(preparation.removedText());
    if (const auto count = preparation.repairs.recoveredSessions.size(); count > 0)
        notices_.tell(
            localized("已恢复 %lld 次中断的会话，可在历史记录中查看。", {std::to_string(count)}),
            DesktopNotices::Kind::news);
    finishImports(preparation.repairs.untranscribedImports);
    tellBrokenOff(preparation.repairs.brokenOffImports);
    // Translates the captions that waited for the model, even after the end of their session.
    application_.translationModels.setInstalledHandler([this](const std::string& id) {
        if (id == *application_.settings.translationTargetLanguage)
            session_.translation().retryIncompleteTranslations();
    });
    application_.recording.leaveDataFolder();
    observations_.followChanges(store().view().sessionPhase, [this](LiveSessionPhase) {
        if (isBetweenSessions())
            spawn(Executor::main(host_), leaveDataFolder());
    });
}

void DesktopProgram::tellObstacle(const RecordingGate::Obstacle& obstacle) {
    notices_.tell(DesktopNotices::Topic::recording, obstacleText(obstacle));
    holder_ = obstacle.holder;
    watchHolder();
}

/// Looks whether the other program still records. When it has stopped, removes the notice about it,
/// or names the next program that records. If captions are running then, they stay unrecorded, and
/// the notice says why.
void DesktopProgram::watchHolder() {
    holderLook_.cancel();
    if (!holder_)
        return;
    constexpr auto topic = DesktopNotices::Topic::recording;
    const auto now = DataFolderLock::holder(application_.paths);
    const bool hasStopped = now != holder_;
    if (hasStopped && isBetweenSessions()) {
        const bool isOther = now && now->processID != QCoreApplication::applicationPid();
        tellObstacle({.holder = isOther ? now : std::nullopt});
        return;
    }
    if (hasStopped && notices_.has(topic))
        notices_.tell(topic, localized("%@ was recording when these captions began, so they are "
                                       "not saved.",
                                       {holder_->text()}));
    constexpr double lookSeconds = 2;
    holderLook_ = host_.after(lookSeconds, [this] { watchHolder(); });
}

/// Lets other programs record and change recordings between two sessions. Waits until the last
/// session is saved.
Task<void> DesktopProgram::leaveDataFolder() {
    constexpr double lookSeconds = 0.1;
    while (store().isStopping() || session_.isWritingDiagnostics())
        co_await sleep(Executor::main(host_), lookSeconds);
    if (isBetweenSessions())
        application_.recording.leaveDataFolder();
}

bool DesktopProgram::isBetweenSessions() {
    const LiveSessionPhase phase = *store().view().sessionPhase;
    return phase == LiveSessionPhase::idle || phase == LiveSessionPhase::failed;
}

/// The interrupted imports wait for a later start if there is no recogniser, or if this program may
/// not change the recordings.
void DesktopProgram::finishImports(const std::vector<RecordingMetadata>& interrupted) {
    if (interrupted.empty() || !application_.speechModelProblem().empty())
        return;
    const DataFolderLease lease = application_.leaseDataFolder();
    if (!lease.hold)
        return;
    for (const RecordingMetadata& import : interrupted)
        application_.imports.startTranscription(import.id, import.filePath);
    notices_.tell(
        localized("%lld 个文件的导入曾中断，正在重新转写。", {std::to_string(interrupted.size())}),
        DesktopNotices::Kind::news);
}

void DesktopProgram::tellBrokenOff(const std::vector<RecordingMetadata>& imports) {
    for (const RecordingMetadata& import : imports)
        notices_.tell(localized(
            "程序在转写或翻译导入的“%@”时意外退出。可在历史记录中选择“重新转写”再试。",
            {import.note.value_or(std::filesystem::path(import.filePath).filename().string())}));
}

/// If no model can be used, shows where to get one. Without this check, the recogniser would
/// download one without notice.
bool DesktopProgram::hasSpeechModel() {
    const std::string problem = application_.speechModelProblem();
    notices_.tell(DesktopNotices::Topic::speechModel, problem);
    if (problem.empty())
        return true;
    windows_.show(DesktopWindows::Kind::settings, "recognition");
    return false;
}

void DesktopProgram::toggle(const LiveSessionControlTrigger& trigger) {
    closeWelcome();
    showIfStarted([&] { listening_.toggle(trigger); });
}

/// The windows close at once; the program ends when everything is saved, or after a limited time.
void DesktopProgram::quit() {
    if (std::exchange(isEnding_, true))
        return;
    listening_.end();
    windows_.finishPending();
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
    spawn(Executor::main(host_),
          endEventLoop(application_.refinement, application_.historyExport, desktop_));
}

} // namespace tessarune
