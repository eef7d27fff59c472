#include "Terminal/SignalWatch.h"

#include <pthread.h>

#include <csignal>
#include <utility>

namespace tessarune {

namespace {

/// Ends the waiting thread; no user sends it.
constexpr int endOfWatch = SIGUSR2;

sigset_t watched() {
    sigset_t set;
    sigemptyset(&set);
    for (int signal : {SIGINT, SIGTERM, SIGHUP, endOfWatch})
        sigaddset(&set, signal);
    return set;
}

} // namespace

void SignalWatch::blockSignals() {
    const sigset_t set = watched();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    std::signal(SIGPIPE, SIG_IGN); // a reader that goes away is a failed write, not the end
}

SignalWatch::SignalWatch(Host& host, std::function<void()> onSignal) {
    thread_ = std::thread([&host, set = watched(), onSignal = std::move(onSignal)] {
        int signal = 0;
        while (sigwait(&set, &signal) == 0 && signal != endOfWatch)
            host.post(onSignal);
    });
}

SignalWatch::~SignalWatch() {
    pthread_kill(thread_.native_handle(), endOfWatch);
    thread_.join();
}

} // namespace tessarune
