#pragma once

#include "Tessarune/app/Application.h"
#include "Tessarune/app/ListeningSession.h"
#include "Tessarune/app/LoginItem.h"
#include "Tessarune/platform/qt-desktop/DesktopMotion.h"
#include "Tessarune/platform/qt-desktop/SingleInstance.h"
#include "Tessarune/platform/qt-desktop/SleepWatch.h"
#include "Tessarune/platform/qt-desktop/XDGDesktop.h"
#include "Tessarune/platform/qt-host/LostDisplay.h"
#include "Tessarune/platform/qt-host/QtHost.h"
#include "Tessarune/platform/qt-host/TerminationSignals.h"
#include "Tessarune/session/TessaruneListeningLifecycleHandler.h"
#include "Tessarune/ui/captions/CaptionWindow.h"
#include "Tessarune/ui/desktop/DesktopRequest.h"
#include "Tessarune/ui/desktop/DesktopSound.h"
#include "Tessarune/ui/desktop/DesktopTray.h"
#include "Tessarune/ui/desktop/DesktopWelcome.h"
#include "Tessarune/ui/desktop/DesktopWindows.h"

#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// The windows of the desktop program over one listening session. Main thread, with the application
/// object.
///
/// Closing a window never ends the program where it can be reached again: by its item in the tray,
/// or through another of its windows. Without either it ends with its last window.
class DesktopProgram {
  public:
    DesktopProgram(TerminationSignals& signals, SingleInstance& instance, DesktopRequest request);
    ~DesktopProgram() { window_.reset(); }
    DesktopProgram(const DesktopProgram&) = delete;

    int run();

  private:
    // DesktopProgram.cpp
    void prepare();
    /// Shows the text until the user has read it.
    void tell(const std::string& text) { notice_ = text; }
    Task<void> connect();
    bool hasSpeechModel();
    void start(const LiveSessionControlTrigger& trigger);
    void toggle(const LiveSessionControlTrigger& trigger);
    Task<void> connectAndStart(LiveSessionControlTrigger trigger);
    void quit();
    void leave();
    LiveTranscriptStore& store() { return session_.store(); }

    // DesktopProgram+System.cpp: what the computer does around the program
    void watchSystem();
    Task<void> secure(std::function<void()> ready);
    Task<void> finish(std::function<void()> ready);
    void saveNow();

    // DesktopProgram+Windows.cpp
    void offerWindows();
    CaptionWindowEnvironment windowEnvironment();
    /// The captions, or on the first start what comes before them.
    void showFirst();
    void makeTray();
    void perform(DesktopAction action);
    void handle(const InstanceRequest& request);
    void showWindow();
    void hideWindow();
    void toggleWindow();
    void closeWindow();
    void endIfUnreachable();

    const DesktopRequest request_;
    SingleInstance& instance_;
    QtHost host_;
    Application application_;
    DesktopSound sound_;
    ListeningSession session_;
    TessaruneListeningLifecycleHandler lifecycle_;
    XDGDesktop desktop_;
    LoginItem loginItem_;
    std::optional<SleepWatch> sleepWatch_;
    std::optional<LostDisplay> lostDisplay_;
    DesktopMotion motion_;
    Published<std::string> notice_;
    std::string soundProblem_; // what was said of it last
    std::unique_ptr<CaptionWindow> window_;
    std::optional<DesktopTray> tray_;
    DesktopWindows windows_;
    std::unique_ptr<DesktopWelcome> welcome_; // on the first start
    bool hasSound_ = false;
    bool isConnecting_ = false;
    bool startsWhenConnected_ = false;
    bool isEnding_ = false;
};

} // namespace tessarune
