#include "Tessarune/platform/qt-host/QtHost.h"

#include "Tessarune/platform/host/ThreadQueue.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

namespace tessarune {

namespace {

/// After this many blocks, the toolkit gets a turn to draw and to handle input.
constexpr int maximumBlocksAtATime = 32;

const auto wakeEvent = static_cast<QEvent::Type>(QEvent::registerEventType());

} // namespace

QtHost::QtHost() : queue_([this] { wake(); }) {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, [this] { runDue(); });
}

QtHost::~QtHost() {
    QCoreApplication::removePostedEvents(this);
}

std::shared_ptr<SerialQueue> QtHost::serialQueue(std::string_view label, QueuePriority priority) {
    return std::make_shared<ThreadQueue>(label, priority);
}

bool QtHost::isOnMainQueue() const {
    return QThread::currentThread() == thread();
}

void QtHost::wake() {
    if (!wakePending_.exchange(true))
        QCoreApplication::postEvent(this, new QEvent(wakeEvent));
}

bool QtHost::event(QEvent* event) {
    if (event->type() != wakeEvent)
        return QObject::event(event);
    wakePending_ = false;
    runDue();
    return true;
}

void QtHost::runDue() {
    for (int i = 0; i < maximumBlocksAtATime; ++i) {
        std::optional<Block> next = queue_.takeNext();
        if (!next)
            break;
        (*next)();
    }
    armTimer();
}

void QtHost::runByItself(const std::function<bool()>& isDone, double seconds) {
    constexpr std::chrono::milliseconds pause(5);
    const double deadline = now() + seconds;
    while (!isDone() && now() < deadline) {
        if (std::optional<Block> next = queue_.takeNext())
            (*next)();
        else
            std::this_thread::sleep_for(pause);
    }
}

void QtHost::armTimer() {
    const MutexLock lock(queue_.mutex());
    const std::optional<double> wait = queue_.secondsUntilNext();
    if (!wait)
        timer_.stop();
    else if (*wait == 0)
        wake();
    else
        timer_.start(static_cast<int>(std::ceil(std::min(*wait, MainQueue::longestWait) * 1000)));
}

} // namespace tessarune
