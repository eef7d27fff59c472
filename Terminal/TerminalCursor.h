#pragma once

/// Hides the cursor of a terminal that is drawn on, and takes single keys from its keyboard.
/// However the program ends or stops, the terminal gets both back.
namespace tessarune::TerminalCursor {

/// From now on the cursor of this terminal may be hidden. Main queue.
void guard(int descriptor);
/// Shows the cursor for good. Main queue.
void release();

/// From now on each key of this terminal can be read as it is pressed, and is not echoed. Does
/// nothing if another program has the terminal, or if the keys are taken already; call it again
/// when the program continues after a stop. Main queue.
void takeKeys(int descriptor);
/// Restores the keyboard. Main queue.
void releaseKeys() noexcept;
/// Whether the program has the terminal's keyboard. Any thread.
bool isInForeground(int descriptor) noexcept;

/// Shows the cursor at once and ends colours, on a new line, if there is a guarded terminal;
/// restores the keyboard. Any thread, and signal handlers.
void restore() noexcept;

/// While it is set, nothing is drawn: the program is about to stop or end. Any thread.
void setPaused(bool paused) noexcept;
bool isPaused() noexcept;

} // namespace tessarune::TerminalCursor
