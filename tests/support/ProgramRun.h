#pragma once

#include "tests/support/TemporaryFolder.h"

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tessarune::testing {

/// The result of running a program.
struct ProgramRun {
    int status = -1; ///< exit status, or -1 if a signal ended it
    std::string output;
    std::string error;
};

/// A program that runs concurrently with the test; the destructor kills it. Throws if it cannot be
/// started.
class StartedProgram {
  public:
    /// Runs in `folder`. `environment` ("NAME=value") overrides this process's own.
    StartedProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                   const std::filesystem::path& folder,
                   const std::vector<std::string>& environment);
    ~StartedProgram();
    StartedProgram(const StartedProgram&) = delete;

    void send(int signal) const;
    /// What it has printed so far.
    std::string output() const;
    /// Waits until it has ended.
    ProgramRun wait();

  private:
    TemporaryFolder streams_;
    pid_t child_ = 0; // 0: it has ended
};

/// Starts a program and waits for it.
ProgramRun run(const std::filesystem::path& program, const std::vector<std::string>& arguments,
               const std::filesystem::path& folder, const std::vector<std::string>& environment);

} // namespace tessarune::testing
