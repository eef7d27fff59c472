#pragma once

#include "Terminal/CommandOptions.h"

#include <optional>
#include <string>
#include <variant>

namespace tessarune {

// What a user can ask of the recorded sessions. An ID may be the beginning of one.

struct ListRecordingsCommand {};
struct ShowRecordingCommand {
    std::string id;
};

struct CountWordsCommand {
    std::string id;
};

using HistoryCommand = std::variant<ListRecordingsCommand, ShowRecordingCommand, CountWordsCommand>;

/// The part of the command line that asks for one of them.
class HistoryOptions {
  public:
    void declare(CommandOptions& options);

    /// What was asked for; nothing if it is no matter of recorded sessions. Throws UsageProblem.
    std::optional<HistoryCommand> command() const;

  private:
    bool list_ = false;
    std::string show_;
    std::string words_;
};

} // namespace tessarune
