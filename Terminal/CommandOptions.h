#pragma once

#include <CLI/CLI.hpp>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tessarune {

/// A mistake in the command line. The message is for the user.
struct UsageProblem : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The options that run a command instead of captions; a command line has at most one command. A
/// command may have details, which are options that are valid only with it. `app` owns all options
/// and must outlive this object.
class CommandOptions {
  public:
    explicit CommandOptions(CLI::App& app) : app_(app) {}

    /// Begins a group: the help lists the following options under this heading.
    void beginGroup(std::string heading) { heading_ = std::move(heading); }

    /// Adds a command without arguments.
    CLI::Option* flag(const std::string& name, bool& value, const std::string& help) {
        return addCommand(app_.add_flag(name, value, help));
    }
    /// Adds a command with one argument, or with several if `value` is a container; the caller may
    /// set their number with `expected` of the returned option. `type` names the argument in the
    /// help.
    template <typename Value>
    CLI::Option* words(const std::string& name, Value& value, const std::string& type,
                       const std::string& help) {
        return addCommand(app_.add_option(name, value, help)->type_name(type));
    }

    /// Adds a detail of `owners`: it is valid if any of these commands is given.
    CLI::Option* detailFlag(std::vector<CLI::Option*> owners, const std::string& name, bool& value,
                            const std::string& help) {
        return addDetail(std::move(owners), app_.add_flag(name, value, help));
    }
    template <typename Value>
    CLI::Option* detailWord(std::vector<CLI::Option*> owners, const std::string& name, Value& value,
                            const std::string& type, const std::string& help) {
        return addDetail(std::move(owners), app_.add_option(name, value, help)->type_name(type));
    }

    /// Throws UsageProblem if two commands are given, or a command with an option from `captions`,
    /// or a detail without its command.
    void refuseClashes(const std::vector<CLI::Option*>& captions) const;

  private:
    struct Detail {
        CLI::Option* option;
        std::vector<CLI::Option*> owners;
    };

    CLI::Option* addCommand(CLI::Option* option);
    CLI::Option* addDetail(std::vector<CLI::Option*> owners, CLI::Option* option);

    CLI::App& app_;
    std::string heading_;
    std::vector<CLI::Option*> commands_;
    std::vector<Detail> details_;
};

inline bool isGiven(const CLI::Option* option) {
    return option->count() > 0;
}

} // namespace tessarune
