#include "Tessarune/diagnostics/TessaruneCommandLineMode.h"
#include "Tessarune/platform/disk/PosixFileSystem.h"

#if TESSARUNE_HAS_WINDOW
#include "Tessarune/ui/desktop/DesktopMain.h"
#endif

#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv, argv + argc);
    tessarune::PosixFileSystem files;
    const auto status =
        tessarune::TessaruneCommandLineMode::runIfRequested(arguments, std::cout, files);
    if (status)
        return *status;
#if TESSARUNE_HAS_WINDOW
    return tessarune::runDesktopProgram(argc, argv);
#else
    std::cout << "This build has no window. For captions in a terminal run tessarune-terminal.\n";
    return 0;
#endif
}
