#pragma once

#include "Tessarune/ui/captions/CaptionCommandsModel.h"

#include <QKeyEvent>
#include <QObject>

namespace tessarune {

/// Handles the user's shortcuts in every window, before the window gets the keys. Only shortcuts
/// with a modifier other than Shift are handled, because other keys are for typing. The caption
/// window, where nobody types, handles the rest itself. Copying selected text has precedence over
/// copying the captions. Main thread; the commands must outlive it.
class ApplicationShortcuts : public QObject {
  public:
    explicit ApplicationShortcuts(const CaptionCommandsModel& commands);

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    /// The row of the enabled command with these keys; -1 if there is none.
    int commandOf(const QKeyEvent& keys) const;

    const CaptionCommandsModel& commands_;
};

} // namespace tessarune
