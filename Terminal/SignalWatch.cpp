#include "Terminal/SignalWatch.h"

#include "Terminal/ExitStatus.h"
#include "Terminal/TerminalCursor.h"
#include "TessaruneCore/host/Mutex.h"

#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <thread>
#include <utility>

namespace tessarune {

namespace {

using Clock = std::chrono::steady_clock;
/// Signals within this time come from the same key press.
constexpr std::chrono::milliseconds samePress{300};

/// Shared with the queued calls; emptied on the main queue.
using Handler = std::shared_ptr<std::function<void()>>;

Handler makeHandler(std::function<void()> function) {
    return std::make_shared<std::function<void()>>(std::move(function));
}

void post(Host& host, const Handler& handler) {
    host.post([handler] {
        if (const auto current = *handler) // a copy: the call may destroy the SignalWatch
            current();
    });
}

/// The handlers of the current SignalWatch, if there is one.
struct SignalHandlers {
    Mutex mutex;
    Host* host GUARDED_BY(mutex) = nullptr;
    Handler onSignal GUARDED_BY(mutex);
    Handler onContinue GUARDED_BY(mutex);
    /// The current SignalWatch, or the last one if there is none now, has received its first
    /// signal.
    bool isEnding GUARDED_BY(mutex) = false;
    Clock::time_point endingSince GUARDED_BY(mutex); ///< the time of that signal
};

SignalHandlers& signalHandlers() {
    static auto& only = *new SignalHandlers; // never destroyed: the thread uses it until the end
    return only;
}

bool isIgnored(int signal) {
    struct sigaction action {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

/// Ends the process as if the signal had not been caught.
[[noreturn]] void dieFrom(int signal) {
    TerminalCursor::setPaused(true);
    TerminalCursor::restore();
    std::signal(signal, SIG_DFL);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    ::kill(::getpid(), signal);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    std::_Exit(128 + signal);
}

void stop() {
    TerminalCursor::setPaused(true);
    TerminalCursor::restore();
    ::kill(::getpid(), SIGSTOP);
}

void resume() {
    TerminalCursor::setPaused(false);
    SignalHandlers& handlers = signalHandlers();
    const MutexLock lock(handlers.mutex);
    if (handlers.host)
        post(*handlers.host, handlers.onContinue);
}

void end(int signal) {
    SignalHandlers& handlers = signalHandlers();
    const MutexLock lock(handlers.mutex);
    const bool isSamePress = handlers.isEnding && Clock::now() - handlers.endingSince <= samePress;
    if (!handlers.host && !isSamePress)
        dieFrom(signal);
    if (!handlers.host)
        return; // a signal of the same key press has already ended the work
    if (!std::exchange(handlers.isEnding, true)) {
        handlers.endingSince = Clock::now();
        post(*handlers.host, handlers.onSignal);
    } else if (!isSamePress) {
        TerminalCursor::setPaused(true);
        TerminalCursor::restore();
        std::_Exit(static_cast<int>(ExitStatus::interrupted));
    }
}

void watch(const sigset_t& set) {
    int signal = 0;
    while (sigwait(&set, &signal) == 0) {
        if (signal == SIGTSTP)
            stop();
        else if (signal == SIGCONT)
            resume();
        else if (signal == SIGQUIT)
            dieFrom(signal);
        else
            end(signal);
    }
}

/// Restores the terminal; the raised signal then has its default action.
void handleCrash(int signal) {
    TerminalCursor::restore();
    ::raise(signal);
}

} // namespace

void SignalWatch::begin() {
    sigset_t set;
    sigemptyset(&set);
    for (int signal : {SIGINT, SIGTERM, SIGQUIT, SIGCONT})
        sigaddset(&set, signal);
    // Under nohup, or without job control, these signals stay ignored.
    for (int signal : {SIGHUP, SIGTSTP})
        if (!isIgnored(signal))
            sigaddset(&set, signal);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    // A closed pipe and a limit on file sizes become failed writes instead of ending the program.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        struct sigaction action {};
        action.sa_handler = handleCrash;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
    std::thread([set] { watch(set); }).detach();
}

SignalWatch::SignalWatch(Host& host, std::function<void()> onSignal,
                         std::function<void()> onContinue) {
    const Handler signalled = makeHandler(std::move(onSignal));
    const Handler continued = makeHandler(std::move(onContinue));
    dropHandlers_ = [signalled, continued] { *signalled = *continued = nullptr; };
    SignalHandlers& handlers = signalHandlers();
    const MutexLock lock(handlers.mutex);
    handlers.host = &host;
    handlers.onSignal = signalled;
    handlers.onContinue = continued;
    handlers.isEnding = false;
}

SignalWatch::~SignalWatch() {
    dropHandlers_();
    SignalHandlers& handlers = signalHandlers();
    const MutexLock lock(handlers.mutex);
    handlers.host = nullptr;
    handlers.onSignal.reset();
    handlers.onContinue.reset();
}

} // namespace tessarune
