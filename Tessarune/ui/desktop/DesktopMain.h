#pragma once

namespace tessarune {

/// Runs the desktop program until it quits. Before it ends, it waits a limited time for its session
/// to be saved. Returns the exit status.
///
/// `tessarune start` begins captioning at once. `tessarune FILE...` and `tessarune file:PATH`
/// caption the files, one after the other, in place of the computer's sound. The other arguments
/// are the values of `DesktopAction`. If the program already runs, this process passes the request
/// on to it and ends.
int runDesktopProgram(int argc, char** argv);

} // namespace tessarune
