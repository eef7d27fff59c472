#include "tests/support/ProgramRun.h"

#include "tests/support/FileContents.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace tessarune::testing {

namespace {

std::string_view nameOf(std::string_view setting) {
    return setting.substr(0, setting.find('='));
}

std::vector<std::string> mergedEnvironment(const std::vector<std::string>& settings) {
    std::vector<std::string> merged = settings;
    for (char** entry = environ; *entry; ++entry) {
        bool replaced = false;
        for (const std::string& setting : settings)
            replaced = replaced || nameOf(setting) == nameOf(*entry);
        if (!replaced)
            merged.emplace_back(*entry);
    }
    return merged;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

} // namespace

StartedProgram::StartedProgram(const std::filesystem::path& program,
                               const std::vector<std::string>& arguments,
                               const std::filesystem::path& folder,
                               const std::vector<std::string>& environment) {
    const auto output = streams_ / "output";
    const auto error = streams_ / "error";

    std::vector<std::string> words = {program.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> settings = mergedEnvironment(environment);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT,
                                     0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, error.c_str(), O_WRONLY | O_CREAT,
                                     0600);
    posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    const int failure = posix_spawn(&child_, program.c_str(), &actions, nullptr,
                                    pointers(words).data(), pointers(settings).data());
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0)
        throw std::runtime_error("cannot start " + program.string());
}

StartedProgram::~StartedProgram() {
    send(SIGKILL);
    wait();
}

void StartedProgram::send(int signal) const {
    if (child_ != 0)
        kill(child_, signal);
}

std::string StartedProgram::output() const {
    return contentsOf(streams_ / "output");
}

ProgramRun StartedProgram::wait() {
    int state = -1;
    if (child_ != 0)
        waitpid(std::exchange(child_, 0), &state, 0);
    return {WIFEXITED(state) ? WEXITSTATUS(state) : -1, output(), contentsOf(streams_ / "error")};
}

ProgramRun run(const std::filesystem::path& program, const std::vector<std::string>& arguments,
               const std::filesystem::path& folder, const std::vector<std::string>& environment) {
    return StartedProgram(program, arguments, folder, environment).wait();
}

} // namespace tessarune::testing
