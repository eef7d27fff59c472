#pragma once

namespace tessarune {

/// The desktop program from its first window to the saved session; gives the status to end with.
///
/// `tessarune start` begins to caption at once, `tessarune file:PATH` too: a file instead of what
/// the computer plays. The other words are those of `DesktopAction`. Where the program runs already
/// it is asked to do the same, and this one ends.
int runDesktopProgram(int argc, char** argv);

} // namespace tessarune
