#pragma once

#include "Terminal/TerminalOptions.h"
#include "Tessarune/app/Application.h"
#include "Tessarune/platform/host/LoopHost.h"

namespace tessarune {

/// The main queue of the terminal program.
struct ProgramLoop {
    LoopHost loop;
};

/// The application with its own main loop. Main queue.
struct Program : ProgramLoop, Application {
    Program() : Application(loop, "tessarune-terminal") {}
};

/// Runs the user's command and returns the exit status.
int run(Program& program, const TerminalOptions& options);

} // namespace tessarune
