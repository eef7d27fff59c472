#pragma once

#include <QByteArray>

/// The capabilities of an X11 desktop, including XWayland. Main thread.
namespace tessarune::X11Desktop {

/// Whether the program can connect to the display that the environment names. Call before the
/// application object is created: without a connection, its constructor ends the program.
bool canBeReached();

// The following functions need the application object. They return false if the program does not
// run on X11.

/// Whether the current window manager keeps a window above others on request.
bool keepsWindowsAbove();
/// Whether there is a tray of the older kind, which embeds windows.
bool hasTray();
/// Whether `message` announces a tray of the older kind. The arguments are those of a native event
/// filter.
bool announcesTray(const QByteArray& kind, const void* message);

} // namespace tessarune::X11Desktop
