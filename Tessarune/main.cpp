#include "Tessarune/diagnostics/TessaruneCommandLineMode.h"
#include "Tessarune/platform/disk/PosixFileSystem.h"

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
    std::cout << "This build has no window. For captions in a terminal run tessarune-terminal.\n";
    return 0;
}
