#include "Tessarune/ui/desktop/DesktopMain.h"

#include "Tessarune/platform/host/PlatformLog.h"
#include "Tessarune/platform/qt-desktop/X11Desktop.h"
#include "Tessarune/shell/StringTables.h"
#include "Tessarune/ui/captions/CaptionFonts.h"
#include "Tessarune/ui/desktop/DesktopProgram.h"
#include "Tessarune/ui/desktop/DesktopSound.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/translation/EmojiFlagSupport.h"

#include <QApplication>
#include <algorithm>
#include <clocale>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <optional>
#include <span>
#include <string>

namespace tessarune {

namespace {

constexpr const char* programName = "tessarune";
constexpr int usageError = 64; // EX_USAGE
constexpr int noInput = 66;    // EX_NOINPUT
constexpr int noDisplay = 69;  // EX_UNAVAILABLE
constexpr int noAnswer = 75;   // EX_TEMPFAIL
static_assert(TessaruneLog::subsystem == TESSARUNE_APPLICATION_ID);

bool hasDisplay() {
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        if (!qEnvironmentVariableIsEmpty(variable))
            return true;
    }
    return false;
}

void nameProgram() {
    QGuiApplication::setQuitOnLastWindowClosed(false);
    const QString name = QStringLiteral("Tessarune");
    QGuiApplication::setApplicationName(name); // the tray shows it as the item's title
    QGuiApplication::setApplicationDisplayName(name);
    QGuiApplication::setDesktopFileName(QStringLiteral(TESSARUNE_APPLICATION_ID));
}

/// Whether the name stands for a stream that only this process was given: in another process, the
/// same name stands for another stream.
bool isOwnStream(const std::filesystem::path& file) {
    const std::string name = file.string();
    return name == "-" || name == "/dev/stdin" || name.starts_with("/dev/fd/") ||
           name.starts_with("/proc/self/");
}

/// Passes the request to the program that already runs. Returns the exit status; `nullopt` if that
/// program has just ended and this one takes its place. `request.actions` then holds only those
/// that the other program has not accepted.
std::optional<int> passOn(SingleInstance& instance, DesktopRequest& request) {
    if (std::ranges::any_of(request.files, isOwnStream)) {
        std::cerr << "tessarune: already running; it cannot read sound that is piped to a second "
                     "start.\n";
        return noInput;
    }
    InstanceRequest rest = request.forOther();
    const std::string failure = instance.forward(rest);
    request.actions.erase(request.actions.begin(),
                          request.actions.end() - static_cast<std::ptrdiff_t>(rest.actions.size()));
    if (instance.standing() == SingleInstance::Standing::first)
        return std::nullopt;
    if (failure.empty())
        return 0;
    std::cerr << "tessarune: already running, but not responding: " << failure << "\n";
    return noAnswer;
}

} // namespace

int runDesktopProgram(int argc, char** argv) {
    TerminationSignals signals;
    if (!hasDisplay()) {
        std::cerr << "tessarune: there is no display. For captions in a terminal run "
                     "tessarune-terminal.\n";
        return noDisplay;
    }
    const bool isAnyPlatform = qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
    const bool usesX11 = isAnyPlatform ? !qEnvironmentVariableIsEmpty("DISPLAY")
                                       : qgetenv("QT_QPA_PLATFORM").startsWith("xcb");
    const bool hasWayland = isAnyPlatform && !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    const bool hasX11 = usesX11 && X11Desktop::canBeReached();
    if (usesX11 && !hasX11 && !hasWayland) {
        std::cerr << "tessarune: the display '" << qgetenv("DISPLAY").constData()
                  << "' cannot be reached.\n";
        return noDisplay;
    }
    // Only X11, which most Wayland desktops provide, too, lets a program keep a window above
    // others.
    if (usesX11 && isAnyPlatform)
        qputenv("QT_QPA_PLATFORM", hasX11 ? "xcb" : "wayland");
    PlatformLog::open(programName);
    nameProgram();
    QApplication application(argc, argv); // removes Qt's own options from the arguments
    // The constructor has set the user's locale. The locale's language is wanted, but libraries for
    // sound and speech parse numbers with a decimal point.
    std::setlocale(LC_NUMERIC, "C");
    nameInterfaceFaces(StringTables::userLocale());
    EmojiFlagSupport::setGlyphTest(rendersAsOneFlag);
    const std::span<char*> arguments(argv + 1, static_cast<std::size_t>(std::max(argc, 1) - 1));
    DesktopRequest request = DesktopRequest::of(arguments);
    if (request.unknown) {
        std::cerr << "tessarune: unknown argument '" << *request.unknown
                  << "'; expected start, stop, toggle, show, history, settings, or files.\n";
        return usageError;
    }
    // If there are several files, the window reports those that cannot be heard, and makes captions
    // for the others.
    const std::string problem =
        request.files.size() == 1 ? DesktopSound::problemOf(request.files.front()) : "";
    if (!problem.empty())
        std::cerr << "tessarune: " << problem << "\n";
    SingleInstance instance(TESSARUNE_APPLICATION_ID);
    if (instance.standing() == SingleInstance::Standing::second) {
        if (const auto status = passOn(instance, request))
            return *status == 0 && !problem.empty() ? noInput : *status;
    }
    if (request.has(DesktopAction::stop) && request.actions.size() == 1 && request.files.empty())
        return 0; // no program runs that could be stopped
    const int status = DesktopProgram(signals, instance, request).run();
    return status == 0 && !problem.empty() ? noInput : status;
}

} // namespace tessarune
