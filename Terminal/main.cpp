#include "Terminal/CommandOutput.h"
#include "Terminal/Program.h"
#include "Terminal/SignalWatch.h"
#include "Tessarune/platform/host/PlatformLog.h"
#include "Tessarune/shell/StringTables.h"

#include <fcntl.h>
#include <unistd.h>

#include <iostream>

namespace {

/// Opens placeholders for closed standard streams. Otherwise a file opened later would get the
/// number of such a stream, and messages to the user would go into that file. Reading from or
/// writing to a placeholder still fails.
void holdClosedStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0)
            ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

} // namespace

int main(int argc, char** argv) {
    using namespace tessarune;
    holdClosedStreams();
    setLocalizationTable(StringTables::forLocale(StringTables::userLocale()));
    const auto parsed = TerminalOptions::parse(argc, argv, std::cout, std::cerr);
    if (const int* status = std::get_if<int>(&parsed))
        return statusOfOutput(*status);
    SignalWatch::begin();
    PlatformLog::open("tessarune-terminal");
    Program program;
    return statusOfOutput(run(program, std::get<TerminalOptions>(parsed)));
}
