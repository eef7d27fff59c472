#pragma once

#include <QWindow>

namespace tessarune {

/// Registers the controls in `qrc:/controls` and the singleton `Theme` with QML, once per process.
/// Main thread, before the first window that uses them.
void registerControls();

/// Shrinks a new window to the free area of its screen: with a large font of the desktop, even the
/// window's minimum size may exceed that area. Main thread.
void fitOnScreen(QWindow& window);

} // namespace tessarune
