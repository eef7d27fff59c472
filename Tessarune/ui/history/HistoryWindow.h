#pragma once

#include "Tessarune/ui/history/HistoryWindowEnvironment.h"
#include "Tessarune/ui/history/HistoryWindowModel.h"

#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <string>

namespace tessarune {

/// The window with the recorded sessions. Main thread; needs the application object.
class HistoryWindow {
  public:
    /// Loads the window without showing it. Ends the program if the window's own files are broken,
    /// which no user can repair.
    explicit HistoryWindow(HistoryWindowEnvironment environment);
    ~HistoryWindow();
    HistoryWindow(const HistoryWindow&) = delete;

    /// Shows the window, raised and active, with the recording of this identifier, or as it was
    /// left.
    void show(const std::string& recording = {});
    /// A deletion can be undone for some seconds; this ends them.
    void finishPending() { model_.finishPending(); }
    QQuickWindow& window() { return *window_; }
    HistoryWindowModel& model() { return model_; }

  private:
    const HistoryWindowEnvironment environment_;
    HistoryWindowModel model_;
    QQmlApplicationEngine engine_;
    QQuickWindow* window_ = nullptr; // the engine's
};

} // namespace tessarune
