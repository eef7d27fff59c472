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
    /// The path that "-" stands for.
    static constexpr const char* standardInput = "/dev/stdin";

    std::filesystem::path path;
    bool fast = false; ///< plays as fast as the recogniser can follow
};

// The commands of `tessarune-terminal`.

struct CaptionsCommand {
    std::variant<AudioSource, FileSource> source = AudioSource::systemAudio();
    bool sourceWasChosen = false; ///< false: sample speech may replace a missing sound server
    std::optional<std::filesystem::path> eventLog;
    bool overwrites = false;           ///< replaces an existing event log
    std::optional<std::string> locale; ///< absent: as in the settings
    /// The target language; empty: no translation; absent: as in the settings.
    std::optional<std::string> target;
    bool records = true; ///< false: the sound and the transcript are not kept
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

/// The parsed command line of `tessarune-terminal`.
struct TerminalOptions {
    using Command =
        std::variant<CaptionsCommand, ListSourcesCommand, ListModelsCommand, InstallModelCommand,
                     RemoveModelCommand, ListLanguagesCommand, DownloadLanguageCommand,
                     RemoveLanguageCommand, TestTranslationCommand, HistoryCommand,
                     ShowSettingsCommand, SetCommand>;

    Command command;
    bool json = false;
    bool quiet = false;

    /// Parses the command line. If there is nothing to run, prints help, the version or a problem
    /// instead, and returns the exit status.
    static std::variant<TerminalOptions, int> parse(int argc, const char* const* argv,
                                                    std::ostream& out, std::ostream& err);
};

} // namespace tessarune
