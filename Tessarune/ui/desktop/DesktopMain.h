#pragma once

namespace tessarune {

/// Runs the desktop program from its first window to the saved session, and returns the exit
/// status.
///
/// `tessarune start` begins captioning at once, and so does `tessarune file:PATH`, with a file in
/// place of the computer's sound. The other words are those of `DesktopAction`. If the program
/// already runs, it is asked to do the same, and this process ends.
int runDesktopProgram(int argc, char** argv);

} // namespace tessarune
