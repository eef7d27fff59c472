#pragma once

#include <QWindow>

namespace tessarune {

/// Registers the controls in `qrc:/controls` and the singleton `Theme` with QML, once per process.
/// Main thread, before the first window that uses them.
void registerControls();

/// Makes a new window small enough for its screen: with a large text size of the desktop, its usual
/// size, and even its minimum, may be larger. Main thread.
void fitOnScreen(QWindow& window);

} // namespace tessarune
