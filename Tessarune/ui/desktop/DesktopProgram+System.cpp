#include "Tessarune/platform/qt-desktop/X11Desktop.h"
#include "Tessarune/ui/controls/DesktopLook.h"
#include "Tessarune/ui/desktop/DesktopProgram.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Localization.h"

#include <QGuiApplication>
#include <QSessionManager>
#include <utility>

namespace tessarune {

void DesktopProgram::watchSystem() {
    // The last window may be the one that names the file of an export: it begins a moment later.
    QObject::connect(qGuiApp, &QGuiApplication::lastWindowClosed, &host_, [this] {
        constexpr double momentSeconds = 0.2;
        closing_.cancel();
        closing_ = host_.after(momentSeconds, [this] { endIfUnreachable(); });
    });
    observations_.followChanges(application_.historyExport.unfinishedFiles(), [this](int files) {
        if (files == 0 && std::exchange(endsAfterExport_, false))
            endIfUnreachable();
    });
    observations_.follow(motion_.isReduced,
                         [this] { DesktopLook::setReducesMotion(*motion_.isReduced); });
    watchRecordings();
    shortcuts_.emplace(window_->commands());
    keyRepeats_.emplace(); // after the shortcuts: the latest event filter is the first
    screenshots_.emplace(ScreenshotService::Environment{
        host_, application_.files, application_.settings, application_.notifications,
        store().view(), [this] { return session_.keepsTexts(); },
        [this] {
            return window_->window().isExposed() ? window_->window().grabWindow() : QImage();
        }});
    trayWatch_.emplace(QDBusConnection::sessionBus(), [this] { makeTray(); });
    if (X11Desktop::hasTray())
        makeTray();
    const auto& problem = store().view().presentedError;
    observations_.followChanges(problem, [this](const std::string& text) {
        // The caption line shows why a start failed. It also shows the failures of a running
        // session, but only until the next words replace them. So a failure of a running session
        // becomes a notice, too, which stays when the next words come.
        if (*store().view().sessionPhase == LiveSessionPhase::failed)
            notifyIfHidden(text);
        else if (!text.empty())
            notices_.tell(DesktopNotices::Topic::session, text);
    });
    // After a long silence, the session reports the status `inactive` and stops. The stop replaces
    // this status at once, so a notice tells the user the reason.
    observations_.followChanges(store().view().status, [this](const SessionStatus& status) {
        if (status.kind == SessionStatus::Kind::inactive)
            notices_.tell(
                DesktopNotices::Topic::silence,
                localized("%lld 分钟未检测到声音，字幕已停止。", {std::to_string(status.minutes)}),
                DesktopNotices::Kind::news);
    });
    observations_.followChanges(store().view().isListening, [this](bool isListening) {
        if (isListening)
            notices_.tell(DesktopNotices::Topic::silence, "");
    });
    notices_.onNotice = [this](const std::string& text) { notifyIfHidden(text); };
    sleepWatch_.emplace(
        QDBusConnection::systemBus(),
        SleepWatch::Handlers{
            .willSleep =
                [this](std::function<void()> ready) {
                    application_.logger.important("system.willSleep", {});
                    spawn(Executor::main(host_), secure(std::move(ready)));
                },
            // The sound resumes by itself; the time asleep is recorded as a gap.
            .didWake = [this] { application_.logger.important("system.didWake", {}); },
            .willShutDown =
                [this](std::function<void()> ready) {
                    spawn(Executor::main(host_), finish(std::move(ready)));
                }});
    const auto endsSession = [this](QSessionManager& manager) {
        manager.setRestartHint(QSessionManager::RestartNever);
        const bool wasListening = *store().view().isListening;
        saveNow();
        if (wasListening) // another program may still cancel the logout
            notices_.tell(localized("桌面会话即将结束，字幕已停止并保存。"),
                          DesktopNotices::Kind::news);
    };
    QObject::connect(qGuiApp, &QGuiApplication::commitDataRequest, &host_, endsSession,
                     Qt::DirectConnection);
    lostDisplay_.emplace([this] {
        saveNow();
        const TaskHandle ending = spawn(Executor::main(host_), application_.refinement.end());
        constexpr double markSeconds = 1; // for marking an unfinished import for the next start
        host_.runByItself([&] { return ending.isFinished(); }, markSeconds);
        application_.compressor.endLeftover();
    });
}

/// Watches the index of the recordings, because another program may record or change recordings.
void DesktopProgram::watchRecordings() {
    try {
        application_.files.createDirectories(application_.paths.appSupportBase());
        recordingsWatch_.emplace(application_.paths.recordingIndex(), host_,
                                 [this] { spawn(Executor::main(host_), recordingsChanged()); });
    } catch (const std::exception& error) {
        application_.logger.important("recordings.watch.failed",
                                      {{"error", std::string(error.what())}});
    }
}

/// Announces a change by another program; the catalog itself announces the changes by this one.
Task<void> DesktopProgram::recordingsChanged() {
    const auto queue = host_.serialQueue("Tessarune.recordings.watch", QueuePriority::utility);
    const bool isNews = co_await runOn(Executor::queue(host_, queue), [&] {
        return application_.catalog.wasIndexChangedElsewhere();
    });
    if (!isNews)
        co_return;
    const auto announce = [this] {
        application_.notifications.post(NotificationName::recordingCatalogDidChange);
    };
    announce();
    // The texts of a session are written shortly after its entry.
    constexpr double textsSeconds = 2;
    recordingsLook_.cancel();
    recordingsLook_ = host_.after(textsSeconds, announce);
}

/// Shows the text as a desktop notification, unless the welcome page is open or the caption window,
/// which shows the text itself, is visible.
void DesktopProgram::notifyIfHidden(const std::string& text) {
    const bool isWelcoming = welcome_ && welcome_->isOpen();
    if (!text.empty() && window_ && !window_->window().isVisible() && !isWelcoming)
        desktop_.notify("Tessarune", text);
}

Task<void> DesktopProgram::secure(std::function<void()> ready) {
    Task<void> securing = store().secureRecording();
    co_await securing;
    ready();
}

Task<void> DesktopProgram::finish(std::function<void()> ready) {
    listening_.stop(LiveSessionControlTrigger::applicationWillTerminate());
    co_await session_.stop();
    ready();
    quit();
}

/// Blocks until the session is saved, but only for a limited time. Used when the desktop session
/// ends or the display is lost, because the event loop may not run again.
void DesktopProgram::saveNow() {
    listening_.stop(LiveSessionControlTrigger::applicationWillTerminate());
    const auto isSaved = [this] {
        return !store().isStopping() && !session_.isWritingDiagnostics();
    };
    host_.runByItself(isSaved, TessaruneListeningLifecycleHandler::longestWaitSeconds);
    windows_.finishPending();
}

} // namespace tessarune
