#pragma once

/// What an X11 desktop, XWayland's included, can do for the program's windows. Main thread, with
/// the application object; all of it is false on other platforms.
namespace tessarune::X11Desktop {

/// Whether the window manager of this moment keeps a window above others when it is asked to.
bool keepsWindowsAbove();
/// Whether there is a tray of the older kind, which windows are embedded in.
bool hasTray();

} // namespace tessarune::X11Desktop
