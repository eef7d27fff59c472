#pragma once

#include "Tessarune/ui/captions/CaptionStageModel.h"
#include "Tessarune/ui/welcome/WelcomeModel.h"

#include <QQmlApplicationEngine>
#include <QQuickWindow>

namespace tessarune {

/// The window of the welcome page. Main thread; needs the application object.
class WelcomeWindow {
  public:
    /// Loads the window without showing it. The sample's captions come from `sample`, which must
    /// outlive the window. Ends the program if the window's own files cannot be loaded.
    WelcomeWindow(WelcomeEnvironment environment, const CaptionWindowEnvironment& sample);
    ~WelcomeWindow();
    WelcomeWindow(const WelcomeWindow&) = delete;

    void show();
    void close();
    /// Whether the page must not be destroyed yet, even if it is closed.
    bool isRunning() const { return model_.isRunning(); }
    QQuickWindow& window() { return *window_; }

  private:
    const WelcomeEnvironment environment_;
    WelcomeModel model_;
    CaptionStageModel stage_;
    QQmlApplicationEngine engine_;
    QQuickWindow* window_ = nullptr; // owned by the engine
};

} // namespace tessarune
