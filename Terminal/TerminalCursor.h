#pragma once

/// The cursor of the terminal that captions are drawn on, which is hidden while they are: whatever
/// ends or stops the program, the terminal gets it back.
namespace tessarune::TerminalCursor {

/// From now on the cursor of this terminal may be hidden. Main queue.
void guard(int descriptor);
/// It is shown again for good. Main queue.
void release();

/// Shows it at once and ends colours, on a line of its own, if there is a guarded terminal. Any
/// thread, and signal handlers.
void restore() noexcept;

/// While it is on, nobody draws: the program is about to be stopped or ended. Any thread.
void setPaused(bool paused) noexcept;
bool isPaused() noexcept;

} // namespace tessarune::TerminalCursor
