#pragma once

namespace tessarune {

/// Registers the controls in `qrc:/controls` and the singletons `Theme` and `WindowKeys` with QML,
/// once per process. Main thread, before the first window that uses them.
void registerControls();

} // namespace tessarune
