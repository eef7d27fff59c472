#pragma once

/// The cursor of the terminal that is drawn on, which is hidden meanwhile, and its keyboard, of
/// which single keys may be taken: whatever ends or stops the program, the terminal gets both back.
namespace tessarune::TerminalCursor {

/// From now on the cursor of this terminal may be hidden. Main queue.
void guard(int descriptor);
/// It is shown again for good. Main queue.
void release();

/// From now on each key of this terminal can be read as it is pressed, and is not shown. Does
/// nothing where another program has the terminal, or they are taken already; to be called again
/// when the program goes on after it was stopped. Main queue.
void takeKeys(int descriptor);
/// The keyboard is as it was. Main queue.
void releaseKeys() noexcept;
/// Whether the program is the one that the terminal's user is typing to. Any thread.
bool isInForeground(int descriptor) noexcept;

/// Shows it at once and ends colours, on a line of its own, if there is a guarded terminal; gives
/// the keyboard back. Any thread, and signal handlers.
void restore() noexcept;

/// While it is on, nobody draws: the program is about to be stopped or ended. Any thread.
void setPaused(bool paused) noexcept;
bool isPaused() noexcept;

} // namespace tessarune::TerminalCursor
