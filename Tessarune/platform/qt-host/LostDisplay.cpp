#include "Tessarune/platform/qt-host/LostDisplay.h"

#include <QString>
#include <cstdlib>
#include <utility>

namespace tessarune {

namespace {

std::function<void()>& pendingWork() {
    static std::function<void()> work;
    return work;
}
QtMessageHandler previousHandler = nullptr;

void doLastWork() {
    if (const auto work = std::exchange(pendingWork(), {})) {
        work();
        std::_Exit(EXIT_FAILURE); // other threads still use what an orderly exit destroys
    }
}

/// Qt says so right before it ends the process: everything of the program is still whole.
void watchMessages(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (previousHandler)
        previousHandler(type, context, text);
    if (text.startsWith(QLatin1String("The X11 connection broke")))
        doLastWork();
}

} // namespace

LostDisplay::LostDisplay(std::function<void()> lastWork) {
    pendingWork() = std::move(lastWork);
    previousHandler = qInstallMessageHandler(watchMessages);
    // Where Qt words it otherwise: later, when some of the program's constants may be gone.
    static const int once = std::atexit(doLastWork);
    Q_UNUSED(once);
}

LostDisplay::~LostDisplay() {
    pendingWork() = {};
    qInstallMessageHandler(previousHandler);
}

} // namespace tessarune
