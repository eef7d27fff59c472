#include "Terminal/Program.h"
#include "Terminal/SignalWatch.h"
#include "Tessarune/platform/host/PlatformLog.h"

#include <iostream>

int main(int argc, char** argv) {
    const auto parsed = tessarune::TerminalOptions::parse(argc, argv, std::cout, std::cerr);
    if (const int* status = std::get_if<int>(&parsed))
        return *status;
    tessarune::SignalWatch::begin();
    tessarune::PlatformLog::open("tessarune-terminal");
    tessarune::Program program;
    return tessarune::run(program, std::get<tessarune::TerminalOptions>(parsed));
}
