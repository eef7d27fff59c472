#pragma once

#include "Tessarune/ui/captions/CaptionStageModel.h"
#include "Tessarune/ui/welcome/WelcomeModel.h"

#include <QQmlApplicationEngine>
#include <QQuickWindow>

namespace tessarune {

/// The window of the first start. Main thread; needs the application object.
class WelcomeWindow {
  public:
    /// Loads it without showing it. The sample's captions are those of `sample`, which outlives the
    /// window. Ends the program where the window's own files are broken.
    WelcomeWindow(WelcomeEnvironment environment, const CaptionWindowEnvironment& sample);
    ~WelcomeWindow();
    WelcomeWindow(const WelcomeWindow&) = delete;

    void show();
    void hide() { window_->hide(); }
    QQuickWindow& window() { return *window_; }

  private:
    const WelcomeEnvironment environment_;
    WelcomeModel model_;
    CaptionStageModel stage_;
    QQmlApplicationEngine engine_;
    QQuickWindow* window_ = nullptr; // the engine's
};

} // namespace tessarune
