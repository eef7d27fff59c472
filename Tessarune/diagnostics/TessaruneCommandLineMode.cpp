#include "Tessarune/diagnostics/TessaruneCommandLineMode.h"

#include "Tessarune/diagnostics/ReplayCLI.h"

#include <algorithm>
#include <ostream>
#include <string_view>

namespace tessarune::TessaruneCommandLineMode {

namespace {

constexpr int success = 0;
constexpr int usageError = 64;

} // namespace

std::optional<int> runIfRequested(const std::vector<std::string>& arguments, std::ostream& out,
                                  FileSystem& files) {
    const auto contains = [&](std::string_view argument) {
        return std::find(arguments.begin(), arguments.end(), argument) != arguments.end();
    };
    std::vector<std::string> flags;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        if (arguments[i].starts_with("--"))
            flags.push_back(arguments[i]);
    }

    if (contains("--replay")) {
        ReplayCLI::run(arguments, out, files);
        return success;
    }
    if (contains("--internal-tools-policy")) {
        out << "buildConfiguration=release\n"
               "defaultEnabled=false\n"
               "isEnabled=false\n"
               "defaultShowOnLaunch=false\n"
               "showOnLaunch=false\n";
        return success;
    }
    const auto retired = std::find_if(flags.begin(), flags.end(), [](const std::string& flag) {
        return flag == "--segmenter-selftest" || flag == "--coordinator-selftest";
    });
    if (retired != flags.end()) {
        out << "Tessarune: " << *retired
            << " was retired.\n"
               "Its checks are part of the project's tests now. To run them all:\n"
               "  scripts/test\n";
        return usageError;
    }
    if (!flags.empty()) {
        out << "Tessarune: unknown command-line flag " << flags.front()
            << ".\nRefusing to launch the GUI from a CLI-looking invocation; "
               "run the app bundle for the interactive app.\n";
        return usageError;
    }
    return std::nullopt;
}

} // namespace tessarune::TessaruneCommandLineMode
