#include "Terminal/CommandOutput.h"
#include "Terminal/Program.h"
#include "Terminal/SignalWatch.h"
#include "Tessarune/platform/host/PlatformLog.h"
#include "Tessarune/shell/StringTables.h"

#include <iostream>

int main(int argc, char** argv) {
    using namespace tessarune;
    setLocalizationTable(StringTables::forLocale(StringTables::userLocale()));
    const auto parsed = TerminalOptions::parse(argc, argv, std::cout, std::cerr);
    if (const int* status = std::get_if<int>(&parsed))
        return statusOfOutput(*status);
    SignalWatch::begin();
    PlatformLog::open("tessarune-terminal");
    Program program;
    return statusOfOutput(run(program, std::get<TerminalOptions>(parsed)));
}
