#pragma once

#include "Tessarune/ui/captions/CaptionAnnouncer.h"
#include "Tessarune/ui/captions/CaptionCommandsModel.h"
#include "Tessarune/ui/captions/CaptionHearingModel.h"
#include "Tessarune/ui/captions/CaptionStageModel.h"
#include "Tessarune/ui/captions/CaptionToolbarModel.h"
#include "Tessarune/ui/captions/CaptionWindowEnvironment.h"
#include "Tessarune/ui/captions/CaptionWindowModel.h"
#include "Tessarune/ui/captions/WindowPlace.h"

#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <memory>

namespace tessarune {

/// The floating caption window. Main thread; needs the application object.
class CaptionWindow {
  public:
    /// Loads the window without showing it. Ends the program if the window's own files cannot be
    /// loaded, which the user cannot repair.
    explicit CaptionWindow(CaptionWindowEnvironment environment);
    ~CaptionWindow();
    CaptionWindow(const CaptionWindow&) = delete;
    /// Registers the caption items with QML, for other windows that show captions.
    static void registerTypes();

    void show();
    void hide();
    QQuickWindow& window() { return *window_; }
    CaptionStageModel& stage() { return stage_; }
    CaptionCommandsModel& commands() { return commands_; }

  private:
    const CaptionWindowEnvironment environment_;
    CaptionWindowModel model_;
    CaptionStageModel stage_;
    CaptionToolbarModel toolbar_;
    CaptionCommandsModel commands_;
    CaptionHearingModel hearing_;
    QQmlApplicationEngine engine_;
    QQuickWindow* window_ = nullptr; // owned by the engine
    std::unique_ptr<WindowPlace> place_;
    std::unique_ptr<CaptionAnnouncer> announcer_;
};

} // namespace tessarune
