#pragma once

#include "Terminal/TerminalOptions.h"
#include "Tessarune/app/Application.h"
#include "Tessarune/platform/host/LoopHost.h"

namespace tessarune {

/// A base class, so that the loop exists before the application that uses it.
struct ProgramLoop {
    LoopHost loop;
};

/// The application with its own main loop. Use it on the main queue only.
struct Program : ProgramLoop, Application {
    Program() : Application(loop, "tessarune-terminal") {}
};

/// Runs the user's command and returns the exit status.
int run(Program& program, const TerminalOptions& options);

} // namespace tessarune
