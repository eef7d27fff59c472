#pragma once

#include "tests/support/TemporaryFolder.h"

#include <sys/types.h>

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

/// A program that runs beside the test; it is killed with the object. Throws if it cannot be
/// started.
class StartedProgram {
  public:
    /// In `folder`. `environment` ("NAME=value") is put over this process's own.
    StartedProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                   const std::filesystem::path& folder,
                   const std::vector<std::string>& environment);
    ~StartedProgram();
    StartedProgram(const StartedProgram&) = delete;

    void send(int signal) const;
    /// What it has printed so far.
    std::string output() const;
    /// Until it has ended.
    ProgramRun wait();

  private:
    TemporaryFolder streams_;
    pid_t child_ = 0; // 0: it has ended
};

/// Starts it and waits for it.
ProgramRun run(const std::filesystem::path& program, const std::vector<std::string>& arguments,
               const std::filesystem::path& folder, const std::vector<std::string>& environment);

} // namespace tessarune::testing
