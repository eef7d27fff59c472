#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tessarune::testing {

/// What a program left behind.
struct ProgramRun {
    int status = -1; ///< exit status, or -1 if a signal ended it
    std::string output;
    std::string error;
};

/// Runs `program` in `folder` and waits for it. `environment` ("NAME=value") is put over this
/// process's own. Throws if it cannot be started.
ProgramRun run(const std::filesystem::path& program, const std::vector<std::string>& arguments,
               const std::filesystem::path& folder, const std::vector<std::string>& environment);

} // namespace tessarune::testing
