#pragma once

#include "Tessarune/ui/captions/CaptionCommandsModel.h"

#include <QKeyEvent>
#include <QObject>
#include <QWindow>

namespace tessarune {

/// The shortcuts of the settings in every window of the program, handled before the window gets the
/// keys. The caption window handles them itself; in other windows plain keys are for typing, and
/// copying a selected text has precedence over copying the captions. Main thread; all references
/// outlive it.
class ApplicationShortcuts : public QObject {
  public:
    ApplicationShortcuts(const CaptionCommandsModel& commands, const QWindow& captions);

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    /// -1 if none can be used now.
    int commandOf(const QKeyEvent& keys) const;

    const CaptionCommandsModel& commands_;
    const QWindow& captions_;
};

} // namespace tessarune
