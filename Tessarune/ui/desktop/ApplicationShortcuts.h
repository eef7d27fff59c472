#pragma once

#include "Tessarune/ui/captions/CaptionCommandsModel.h"

#include <QKeyEvent>
#include <QObject>
#include <QWindow>

namespace tessarune {

/// The shortcuts of the settings in every window of the program: seen before the window sees the
/// keys. The caption window has them of its own; elsewhere plain keys are for typing, and where
/// text is selected its own copy goes before that of captions. Main thread; all outlive it.
class ApplicationShortcuts : public QObject {
  public:
    ApplicationShortcuts(const CaptionCommandsModel& commands, const QWindow& captions);

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    /// -1: none that can be used now.
    int commandOf(const QKeyEvent& keys) const;

    const CaptionCommandsModel& commands_;
    const QWindow& captions_;
};

} // namespace tessarune
