#include "Tessarune/ui/desktop/DesktopProgram.h"

#include <QGuiApplication>
#include <QSessionManager>
#include <utility>

namespace tessarune {

void DesktopProgram::watchSystem() {
    QObject::connect(qGuiApp, &QGuiApplication::lastWindowClosed, &host_,
                     [this] { endIfUnreachable(); });
    sleepWatch_.emplace(
        QDBusConnection::systemBus(),
        SleepWatch::Handlers{
            .willSleep =
                [this](std::function<void()> ready) {
                    application_.logger.important("system.willSleep", {});
                    spawn(Executor::main(host_), secure(std::move(ready)));
                },
            // The sound comes back by itself; the time asleep is a gap in it.
            .didWake = [this] { application_.logger.important("system.didWake", {}); },
            .willShutDown =
                [this](std::function<void()> ready) {
                    spawn(Executor::main(host_), finish(std::move(ready)));
                }});
    const auto endsSession = [this](QSessionManager& manager) {
        manager.setRestartHint(QSessionManager::RestartNever);
        saveNow();
    };
    QObject::connect(qGuiApp, &QGuiApplication::commitDataRequest, &host_, endsSession,
                     Qt::DirectConnection);
    lostDisplay_.emplace([this] { saveNow(); });
}

Task<void> DesktopProgram::secure(std::function<void()> ready) {
    Task<void> securing = store().secureRecording();
    co_await securing;
    ready();
}

Task<void> DesktopProgram::finish(std::function<void()> ready) {
    co_await session_.stop();
    ready();
    quit();
}

/// Before the desktop's session ends, or the display is gone: nobody waits for a task then.
void DesktopProgram::saveNow() {
    store().stopListening(LiveSessionControlTrigger::applicationWillTerminate());
    host_.runByItself([this] { return !store().isStopping(); },
                      TessaruneListeningLifecycleHandler::longestWaitSeconds);
}

} // namespace tessarune
