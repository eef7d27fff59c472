#pragma once

namespace tessarune {

/// Registers the controls in `qrc:/controls` and the singleton `Theme` with QML, once per process.
/// Main thread, before the first window that uses them.
void registerControls();

} // namespace tessarune
