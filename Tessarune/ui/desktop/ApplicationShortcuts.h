#pragma once

#include "Tessarune/ui/captions/CaptionCommandsModel.h"

#include <QKeyEvent>
#include <QObject>
#include <QWindow>

namespace tessarune {

/// Handles the shortcuts of the settings in every window except the caption window, which handles
/// them itself. A shortcut runs before the window gets the keys. It needs a modifier other than
/// Shift, because other keys are for typing; copying selected text has precedence over copying the
/// captions. Main thread; all references must outlive it.
class ApplicationShortcuts : public QObject {
  public:
    ApplicationShortcuts(const CaptionCommandsModel& commands, const QWindow& captions);

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    /// The row of the enabled command with these keys; -1 if there is none.
    int commandOf(const QKeyEvent& keys) const;

    const CaptionCommandsModel& commands_;
    const QWindow& captions_;
};

} // namespace tessarune
