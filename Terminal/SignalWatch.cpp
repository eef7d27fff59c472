#include "Terminal/SignalWatch.h"

#include "Terminal/ExitStatus.h"
#include "Terminal/TerminalCursor.h"
#include "TessaruneCore/host/Mutex.h"

#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>
#include <utility>

namespace tessarune {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds samePress{300};

/// The handlers for signals, if there are any.
struct Interest {
    Mutex mutex;
    Host* host GUARDED_BY(mutex) = nullptr;
    std::function<void()> onSignal GUARDED_BY(mutex);
    std::function<void()> onContinue GUARDED_BY(mutex);
    bool isEnding GUARDED_BY(mutex) = false;
    Clock::time_point endingSince GUARDED_BY(mutex);
};

Interest& interest() {
    static Interest only;
    return only;
}

bool isIgnored(int signal) {
    struct sigaction action {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

/// Ends the process as if the signal had not been caught.
[[noreturn]] void dieOf(int signal) {
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

void goOn() {
    TerminalCursor::setPaused(false);
    Interest& now = interest();
    const MutexLock lock(now.mutex);
    if (now.host && now.onContinue)
        now.host->post(now.onContinue);
}

void end(int signal) {
    Interest& now = interest();
    const MutexLock lock(now.mutex);
    const bool isSamePress = now.isEnding && Clock::now() - now.endingSince <= samePress;
    if (!now.host && !isSamePress)
        dieOf(signal);
    if (!now.host)
        return; // the requested end has come already
    if (!std::exchange(now.isEnding, true)) {
        now.endingSince = Clock::now();
        now.host->post(now.onSignal);
    } else if (!isSamePress) {
        TerminalCursor::setPaused(true);
        TerminalCursor::restore();
        std::_Exit(static_cast<int>(ExitStatus::stoppedTwice));
    }
}

void watch(const sigset_t& set) {
    int signal = 0;
    while (sigwait(&set, &signal) == 0) {
        if (signal == SIGTSTP)
            stop();
        else if (signal == SIGCONT)
            goOn();
        else if (signal == SIGQUIT)
            dieOf(signal);
        else
            end(signal);
    }
}

/// The system's default action follows.
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
    // Under nohup, or without job control, the program leaves these signals alone.
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
    interest(); // made before the thread, so that it outlives it
    std::thread([set] { watch(set); }).detach();
}

SignalWatch::SignalWatch(Host& host, std::function<void()> onSignal,
                         std::function<void()> onContinue) {
    Interest& now = interest();
    const MutexLock lock(now.mutex);
    now.host = &host;
    now.onSignal = std::move(onSignal);
    now.onContinue = std::move(onContinue);
    now.isEnding = false;
}

SignalWatch::~SignalWatch() {
    Interest& now = interest();
    const MutexLock lock(now.mutex);
    now.host = nullptr;
    now.onSignal = {};
    now.onContinue = {};
}

} // namespace tessarune
