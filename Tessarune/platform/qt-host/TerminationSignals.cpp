#include "Tessarune/platform/qt-host/TerminationSignals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>
#include <utility>

namespace tessarune {

namespace {

int blockAndOpen() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // A closed pipe and a limit on file sizes become failed writes instead of ending the program.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    return signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC);
}

} // namespace

TerminationSignals::TerminationSignals() : descriptor_(blockAndOpen()) {}

TerminationSignals::~TerminationSignals() {
    notifier_.reset();
    close(descriptor_);
}

void TerminationSignals::watch(std::function<void()> onSignal) {
    notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated,
                     [this, onSignal = std::move(onSignal)] {
                         signalfd_siginfo info;
                         while (read(descriptor_, &info, sizeof info) == sizeof info)
                             onSignal();
                     });
}

} // namespace tessarune
