#pragma once

#include "Terminal/HistoryOptions.h"
#include "Tessarune/audio/AudioSource.h"

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tessarune {

/// A file to be captioned.
struct FileSource {
    /// What "-" stands for.
    static constexpr const char* standardInput = "/dev/stdin";

    std::filesystem::path path;
    bool fast = false; ///< as fast as the recogniser goes, instead of at real speed
};

// What a user can ask `tessarune-terminal` for.

struct CaptionsCommand {
    std::variant<AudioSource, FileSource> source = AudioSource::systemAudio();
    bool sourceWasChosen = false;
    std::optional<std::filesystem::path> eventLog;
    bool overwrites = false;           ///< an event log that is there already
    std::optional<std::string> locale; ///< absent: the one in the settings
    /// What to translate into; empty: nothing is translated; absent: as the settings say.
    std::optional<std::string> target;
    bool records = true; ///< unless this run must not leave anything behind
};
struct ListSourcesCommand {};
struct ListModelsCommand {};
struct InstallModelCommand {
    std::string name;
};
struct RemoveModelCommand {
    std::string name;
};
struct ListLanguagesCommand {};
struct DownloadLanguageCommand {
    std::string id;
};
struct RemoveLanguageCommand {
    std::string id;
};
struct TestTranslationCommand {
    std::string target;
};

struct ShowSettingsCommand {};
struct SetCommand {
    std::vector<std::pair<std::string, std::string>> values; ///< key and text, in order
};

/// The command line of `tessarune-terminal`, understood.
struct TerminalOptions {
    using Command =
        std::variant<CaptionsCommand, ListSourcesCommand, ListModelsCommand, InstallModelCommand,
                     RemoveModelCommand, ListLanguagesCommand, DownloadLanguageCommand,
                     RemoveLanguageCommand, TestTranslationCommand, HistoryCommand,
                     ShowSettingsCommand, SetCommand>;

    Command command;
    bool json = false;
    bool quiet = false;

    /// Reads the command line. Prints help, the version or what is wrong, and gives the status to
    /// end with, where there is nothing to run.
    static std::variant<TerminalOptions, int> parse(int argc, const char* const* argv,
                                                    std::ostream& out, std::ostream& err);
};

} // namespace tessarune
