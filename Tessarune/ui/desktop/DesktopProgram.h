#pragma once

#include "Tessarune/app/Application.h"
#include "Tessarune/app/ListeningSession.h"
#include "Tessarune/app/LoginItem.h"
#include "Tessarune/platform/disk/FileWatch.h"
#include "Tessarune/platform/qt-desktop/DesktopMotion.h"
#include "Tessarune/platform/qt-desktop/SingleInstance.h"
#include "Tessarune/platform/qt-desktop/SleepWatch.h"
#include "Tessarune/platform/qt-desktop/TrayWatch.h"
#include "Tessarune/platform/qt-desktop/XDGDesktop.h"
#include "Tessarune/platform/qt-host/LostDisplay.h"
#include "Tessarune/platform/qt-host/QtHost.h"
#include "Tessarune/platform/qt-host/TerminationSignals.h"
#include "Tessarune/session/TessaruneListeningLifecycleHandler.h"
#include "Tessarune/ui/captions/CaptionWindow.h"
#include "Tessarune/ui/desktop/ApplicationShortcuts.h"
#include "Tessarune/ui/desktop/DesktopListening.h"
#include "Tessarune/ui/desktop/DesktopNotices.h"
#include "Tessarune/ui/desktop/DesktopRequest.h"
#include "Tessarune/ui/desktop/DesktopSound.h"
#include "Tessarune/ui/desktop/DesktopTray.h"
#include "Tessarune/ui/desktop/DesktopWelcome.h"
#include "Tessarune/ui/desktop/DesktopWindows.h"
#include "Tessarune/ui/desktop/KeyRepeats.h"
#include "Tessarune/ui/desktop/ScreenshotService.h"
#include "Tessarune/ui/desktop/WindowLog.h"
#include "TessaruneCore/observation/Observations.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// The desktop program: its windows, its tray item and one listening session. Main thread; the
/// application object must outlive it.
///
/// The program ends when its last window is closed and the files that it exports are complete,
/// unless the user can reach it through its tray item.
class DesktopProgram {
  public:
    DesktopProgram(TerminationSignals& signals, SingleInstance& instance, DesktopRequest request);
    ~DesktopProgram() {
        shortcuts_.reset();
        window_.reset();
    }
    DesktopProgram(const DesktopProgram&) = delete;

    int run();

  private:
    // DesktopProgram.cpp
    void prepare();
    void finishImports(const std::vector<RecordingMetadata>& interrupted);
    void tellBrokenOff(const std::vector<RecordingMetadata>& imports);
    void tellObstacle(const RecordingGate::Obstacle& obstacle);
    void watchHolder();
    Task<void> leaveDataFolder();
    bool isBetweenSessions();
    bool hasSpeechModel();
    void toggle(const LiveSessionControlTrigger& trigger);
    void quit();
    void leave();
    LiveTranscriptStore& store() { return session_.store(); }

    // DesktopProgram+System.cpp: events of the system and the desktop
    void watchSystem();
    void watchRecordings();
    Task<void> recordingsChanged();
    void notifyIfHidden(const std::string& text);
    Task<void> secure(std::function<void()> ready);
    Task<void> finish(std::function<void()> ready);
    void saveNow();

    // DesktopProgram+Windows.cpp
    void offerWindows();
    CaptionWindowEnvironment windowEnvironment();
    void recordFollow(const std::string& event, const LogFields& fields, bool important);
    /// Shows the caption window, or the welcome page on a first start without a request.
    void showFirst();
    void closeWelcome();
    Task<void> releaseWelcome();
    void makeTray();
    void perform(DesktopAction action);
    void handle(const InstanceRequest& request);
    void showWindow();
    void showIfStarted(const std::function<void()>& command);
    bool isOutOfSight() const;
    void hideWindow();
    void toggleWindow();
    void closeWindow();
    void endIfUnreachable();
    bool isInTray() const;

    const DesktopRequest request_;
    SingleInstance& instance_;
    QtHost host_;
    Application application_;
    DesktopSound sound_;
    ListeningSession session_;
    DesktopNotices notices_;
    DesktopListening listening_;
    TessaruneListeningLifecycleHandler lifecycle_;
    XDGDesktop desktop_;
    LoginItem loginItem_;
    std::optional<SleepWatch> sleepWatch_;
    std::optional<TrayWatch> trayWatch_;
    std::optional<LostDisplay> lostDisplay_;
    std::optional<ScreenshotService> screenshots_;
    std::optional<ApplicationShortcuts> shortcuts_;
    std::optional<KeyRepeats> keyRepeats_;
    DesktopMotion motion_;
    WindowLog windowLog_;
    Published<std::string>
        downloadTrouble_; // why the last attempt failed, and when the next begins
    std::unique_ptr<CaptionWindow> window_;
    std::optional<DesktopTray> tray_;
    DesktopWindows windows_;
    std::unique_ptr<DesktopWelcome> welcome_; // on the first start, until the page has ended
    std::optional<FileWatch> recordingsWatch_;
    DelayedCall recordingsLook_;
    std::optional<DataFolderLock::Holder> holder_; // the program that a notice names
    DelayedCall holderLook_;
    DelayedCall closing_;
    bool endsAfterExport_ = false; // all windows are closed, but a file is being written
    bool isEnding_ = false;
    Observations observations_;
};

} // namespace tessarune
