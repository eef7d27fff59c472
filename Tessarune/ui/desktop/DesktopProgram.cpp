#include "Tessarune/ui/desktop/DesktopProgram.h"

#include "Tessarune/app/Application.h"
#include "Tessarune/app/ListeningSession.h"
#include "Tessarune/platform/host/PlatformLog.h"
#include "Tessarune/platform/qt-host/QtHost.h"
#include "Tessarune/platform/qt-host/TerminationSignals.h"
#include "Tessarune/session/TessaruneListeningLifecycleHandler.h"
#include "Tessarune/ui/captions/CaptionWindow.h"
#include "Tessarune/ui/desktop/DesktopSound.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Localization.h"

#include <QGuiApplication>
#include <algorithm>
#include <iostream>
#include <span>
#include <string_view>
#include <utility>

namespace tessarune {

namespace {

constexpr std::string_view programName = "tessarune";
constexpr std::string_view filePrefix = "file:";
constexpr std::string_view startWord = "start";
constexpr int noDisplay = 69; // EX_UNAVAILABLE
static_assert(TessaruneLog::subsystem == TESSARUNE_APPLICATION_ID);

/// What the program was started with.
struct DesktopRequest {
    std::optional<std::filesystem::path> file;
    bool starts = false; ///< captions begin without a click

    static DesktopRequest of(std::span<char*> arguments) {
        DesktopRequest request;
        for (const std::string_view argument : arguments) {
            if (argument.starts_with(filePrefix))
                request.file = std::filesystem::path(argument.substr(filePrefix.size()));
            if (argument == startWord)
                request.starts = true;
        }
        // A file is there to be heard; what else is heard is the user's choice.
        request.starts |= request.file.has_value();
        return request;
    }
};

/// `quit` would ask the window first, which is hidden and declines.
void endEventLoop() {
    QCoreApplication::exit(0);
}

/// One caption window over one listening session. Main thread, with the application object.
class DesktopProgram {
  public:
    DesktopProgram(TerminationSignals& signals, DesktopRequest request);
    ~DesktopProgram() { window_.reset(); }
    DesktopProgram(const DesktopProgram&) = delete;

    int run();

  private:
    CaptionWindowEnvironment windowEnvironment();
    void prepare();
    /// Shows the text until the user has read it.
    void tell(const std::string& text) { notice_ = text; }
    Task<void> connect();
    bool hasSpeechModel();
    void toggle(const LiveSessionControlTrigger& trigger);
    Task<void> connectAndStart(LiveSessionControlTrigger trigger);
    void close();
    LiveTranscriptStore& store() { return session_.store(); }

    const bool startsAtOnce_;
    QtHost host_;
    Application application_{host_, std::string(programName)};
    DesktopSound sound_;
    ListeningSession session_;
    TessaruneListeningLifecycleHandler lifecycle_;
    Published<std::string> notice_;
    std::string soundProblem_; // what was said of it last
    std::unique_ptr<CaptionWindow> window_;
    bool hasSound_ = false;
    bool isConnecting_ = false;
    bool isClosing_ = false;
};

DesktopProgram::DesktopProgram(TerminationSignals& signals, DesktopRequest request)
    : startsAtOnce_(request.starts),
      sound_(host_, std::move(request.file),
             [this] { store().stopListening(LiveSessionControlTrigger::programmatic()); }),
      session_(application_, sound_.server(), ListeningSession::Options{nullptr, sound_.isFile()}),
      lifecycle_(host_, application_.logger, store().weak_from_this(), endEventLoop) {
    signals.watch([this] { close(); });
}

int DesktopProgram::run() {
    prepare();
    window_ = std::make_unique<CaptionWindow>(windowEnvironment());
    window_->show();
    if (startsAtOnce_)
        toggle(LiveSessionControlTrigger::programmatic());
    else
        spawn(Executor::main(host_), connect());
    return QGuiApplication::exec();
}

CaptionWindowEnvironment DesktopProgram::windowEnvironment() {
    return {host_,
            application_.settings,
            store().view(),
            sound_.name(),
            notice_,
            application_.storedDefaults,
            {[this](const auto& trigger) { toggle(trigger); },
             [this](const AudioSource& source) { store().selectSource(source); },
             [this] { store().refreshInputDevices(); },
             [this] { session_.translation().retryIncompleteTranslations(); },
             [this] { store().clearCaptions(); }, [this] { return store().visibleText(); },
             [this] { notice_ = std::string(); }, [this] { close(); }}};
}

/// Where nothing can be recorded, captions go on and the user hears why.
void DesktopProgram::prepare() {
    const Application::Preparation found = application_.prepareToRecord();
    if (found.holder) {
        application_.recordNothing();
        application_.prepare();
        tell(localized("%@（进程 %lld）正在录音；这里的字幕不会保存。",
                       {found.holder->program, std::to_string(found.holder->processID)}));
    } else if (!found.failure.empty()) {
        tell(localized("Nothing can be recorded: %@", {found.failure}));
    } else {
        tell(found.doubt);
    }
}

Task<void> DesktopProgram::connect() {
    isConnecting_ = true;
    Task<std::string> connecting = sound_.connect();
    const std::string problem = co_await connecting;
    isConnecting_ = false;
    hasSound_ = problem.empty();
    if (hasSound_)
        store().refreshInputDevices();
    if (!hasSound_ || *notice_ == soundProblem_)
        tell(problem);
    soundProblem_ = problem;
}

/// Says what is wrong where there is none: a session would fetch it without a word.
bool DesktopProgram::hasSpeechModel() {
    const std::string problem = application_.speechModelProblem();
    if (!problem.empty())
        tell(problem + " " +
             localized("In a terminal, tessarune-terminal --model list shows the speech models; "
                       "--model NAME downloads one, or replaces a damaged one."));
    return problem.empty();
}

void DesktopProgram::toggle(const LiveSessionControlTrigger& trigger) {
    if (!*store().view().isListening && !hasSpeechModel())
        return;
    if (hasSound_)
        store().toggleListening(trigger);
    else if (!isConnecting_)
        spawn(Executor::main(host_), connectAndStart(trigger));
}

Task<void> DesktopProgram::connectAndStart(LiveSessionControlTrigger trigger) {
    Task<void> connecting = connect();
    co_await connecting;
    if (hasSound_ && !isClosing_)
        store().startListening(trigger);
}

/// The window goes at once, the program when everything is saved.
void DesktopProgram::close() {
    if (std::exchange(isClosing_, true))
        return;
    application_.logger.event("window.subtitleCloseRequested", {}, Importance::important);
    window_->hide();
    store().stopListening(LiveSessionControlTrigger::subtitleWindowClose());
    if (lifecycle_.applicationShouldTerminate() ==
        TessaruneListeningLifecycleHandler::TerminateReply::now)
        endEventLoop();
}

bool hasDisplay() {
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        if (!qEnvironmentVariableIsEmpty(variable))
            return true;
    }
    return false;
}

} // namespace

int runDesktopProgram(int argc, char** argv) {
    TerminationSignals signals;
    if (!hasDisplay()) {
        std::cerr << "tessarune: there is no display. For captions in a terminal run "
                     "tessarune-terminal.\n";
        return noDisplay;
    }
    // Only X11, which Wayland desktops have too, keeps a window above others for a program.
    if (!qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    PlatformLog::open(programName.data());
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::setApplicationName(QString::fromUtf8(programName.data()));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Tessarune"));
    QGuiApplication::setDesktopFileName(QStringLiteral(TESSARUNE_APPLICATION_ID));
    QGuiApplication application(argc, argv);
    const std::span<char*> arguments(argv + 1, static_cast<std::size_t>(std::max(argc, 1) - 1));
    return DesktopProgram(signals, DesktopRequest::of(arguments)).run();
}

} // namespace tessarune
