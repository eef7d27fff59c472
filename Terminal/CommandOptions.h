#pragma once

#include <CLI/CLI.hpp>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tessarune {

/// What is wrong with the command line, for the user.
struct UsageProblem : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The options that replace captions: a command line may have at most one of them. Each may have
/// details, which are meaningless without it.
class CommandOptions {
  public:
    explicit CommandOptions(CLI::App& app) : app_(app) {}

    /// The heading of the following options in the help.
    void begin(std::string heading) { heading_ = std::move(heading); }

    CLI::Option* flag(const std::string& name, bool& value, const std::string& help) {
        return command(app_.add_flag(name, value, help));
    }
    /// A command with one word, or with as many as `value` and `expected` allow.
    template <typename Value>
    CLI::Option* words(const std::string& name, Value& value, const std::string& type,
                       const std::string& help) {
        return command(app_.add_option(name, value, help)->type_name(type));
    }

    /// A detail of one of `owners`, under the same heading.
    CLI::Option* detailFlag(std::vector<CLI::Option*> owners, const std::string& name, bool& value,
                            const std::string& help) {
        return detail(std::move(owners), app_.add_flag(name, value, help));
    }
    template <typename Value>
    CLI::Option* detailWord(std::vector<CLI::Option*> owners, const std::string& name, Value& value,
                            const std::string& type, const std::string& help) {
        return detail(std::move(owners), app_.add_option(name, value, help)->type_name(type));
    }

    /// Refuses two commands, a command beside one of `captions`, and a detail without its command.
    /// Throws UsageProblem.
    void refuseClashes(const std::vector<CLI::Option*>& captions) const;

  private:
    struct Detail {
        CLI::Option* option;
        std::vector<CLI::Option*> owners;
    };

    CLI::Option* command(CLI::Option* option);
    CLI::Option* detail(std::vector<CLI::Option*> owners, CLI::Option* option);

    CLI::App& app_;
    std::string heading_;
    std::vector<CLI::Option*> commands_;
    std::vector<Detail> details_;
};

inline bool isGiven(const CLI::Option* option) {
    return option->count() > 0;
}

} // namespace tessarune
