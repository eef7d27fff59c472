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
    /// Loads the window without showing it. Ends the program if the QML files, which are part of
    /// the program, cannot be loaded: the user could not repair this.
    explicit HistoryWindow(HistoryWindowEnvironment environment);
    ~HistoryWindow();
    HistoryWindow(const HistoryWindow&) = delete;

    /// Shows, raises and activates the window. If `recording` is an identifier, selects that
    /// recording.
    void show(const std::string& recording = {});
    /// Carries out the deletions that could still be undone, and waits until all changes are
    /// written.
    void finishPending() { model_.finishPending(); }
    QQuickWindow& window() { return *window_; }
    HistoryWindowModel& model() { return model_; }

  private:
    const HistoryWindowEnvironment environment_;
    HistoryWindowModel model_;
    QQmlApplicationEngine engine_;
    QQuickWindow* window_ = nullptr; // owned by the engine
};

} // namespace tessarune
