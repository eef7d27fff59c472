#pragma once

/// The capabilities of an X11 desktop, including XWayland. Main thread, with the application
/// object; the functions return false on other platforms.
namespace tessarune::X11Desktop {

/// Whether the display that the environment names lets this program in. Before the application
/// object, which ends the program otherwise.
bool canBeReached();
/// Whether the current window manager keeps a window above others on request.
bool keepsWindowsAbove();
/// Whether there is a tray of the older kind, which embeds windows.
bool hasTray();

} // namespace tessarune::X11Desktop
