#pragma once

/// Takes single keys from the terminal's keyboard, and guards a terminal whose cursor the program
/// hides. Keyboard and cursor are restored when the program ends, crashes or stops, except after
/// SIGKILL and SIGSTOP.
namespace tessarune::TerminalCursor {

/// Makes `restore` show the cursor of this terminal. Call before hiding it. Main queue.
void guard(int descriptor);
/// Ends `guard`. Call after showing the cursor. Main queue.
void release();

/// Makes each key of this terminal readable when it is pressed, without echo. Does nothing if
/// another program has the terminal or if the keys are already taken. Call it again when the
/// program continues after a stop. Main queue.
void takeKeys(int descriptor);
/// Restores the keyboard. Main queue.
void releaseKeys() noexcept;
/// Whether the program has the terminal: it is in the foreground. Any thread.
bool isInForeground(int descriptor) noexcept;

/// Restores the keyboard; on a guarded terminal, also resets the colours, shows the cursor and
/// begins a new line. Any thread, and signal handlers.
void restore() noexcept;

/// Drawing is paused while the program is stopped, or about to stop or end. Check `isPaused`
/// before drawing. Any thread.
void setPaused(bool paused) noexcept;
bool isPaused() noexcept;

} // namespace tessarune::TerminalCursor
