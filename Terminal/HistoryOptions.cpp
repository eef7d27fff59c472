#include "Terminal/HistoryOptions.h"

#include "TessaruneCore/text/Localization.h"

namespace tessarune {

void HistoryOptions::declare(CommandOptions& options) {
    options.begin(localized("Recorded sessions"));
    options.flag("--list", list_, localized("List them, the newest first"));
    options.words("--show", show_, "ID",
                  localized("Print a transcript, by its ID or the beginning of it"));
    options.words("--words", words_, "ID",
                  localized("Count the words of a transcript, with their meanings"));
}

std::optional<HistoryCommand> HistoryOptions::command() const {
    if (list_)
        return ListRecordingsCommand{};
    if (!show_.empty())
        return ShowRecordingCommand{show_};
    if (!words_.empty())
        return CountWordsCommand{words_};
    return std::nullopt;
}

} // namespace tessarune
