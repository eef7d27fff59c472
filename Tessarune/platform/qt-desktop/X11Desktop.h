#pragma once

/// The capabilities of an X11 desktop, including XWayland, for the program's windows. Main thread,
/// with the application object; all of them are false on other platforms.
namespace tessarune::X11Desktop {

/// Whether the current window manager keeps a window above others on request.
bool keepsWindowsAbove();
/// Whether there is a tray of the older kind, which embeds windows.
bool hasTray();

} // namespace tessarune::X11Desktop
