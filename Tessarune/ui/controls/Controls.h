#pragma once

namespace tessarune {

/// Makes the controls in `qrc:/controls` and the singleton `Theme` known to QML, once a process.
/// Main thread, before the first window that uses them.
void registerControls();

} // namespace tessarune
