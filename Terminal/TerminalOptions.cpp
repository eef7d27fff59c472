#include "Terminal/TerminalOptions.h"

#include "Terminal/ExitStatus.h"
#include "TessaruneCore/recognition/ModelCatalog.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace tessarune {

namespace {

constexpr const char* footer = R"(Examples:
  tessarune-terminal                                captions of what the computer plays
  tessarune-terminal --source mic                   captions of the default microphone
  tessarune-terminal --source file:talk.m4a --fast  captions of a file, as fast as possible
  tessarune-terminal --event-log talk.ndjson        keep the events for tessarune --replay
  tessarune-terminal --json | jq .text              captions for another program

Ctrl-C ends the captions after the last words; a second Ctrl-C ends at once.)";

std::variant<AudioSource, FileSource> parseSource(const std::string& text) {
    if (text == "system")
        return AudioSource::systemAudio();
    if (text == "mic")
        return AudioSource::microphone();
    if (text.starts_with("mic:") && text.size() > 4)
        return AudioSource::microphone(text.substr(4));
    if (text.starts_with("file:") && text.size() > 5)
        return FileSource{text.substr(5)};
    throw CLI::ValidationError("--source",
                               "'" + text + "' is not system, mic, mic:NAME or file:PATH");
}

std::string checkedLocale(const std::string& text) {
    const auto& options = ModelCatalog::recognitionOptions();
    const bool known = std::any_of(options.begin(), options.end(), [&](const auto& option) {
        return option.localeIdentifier == text;
    });
    if (known)
        return text;
    std::string message = "'" + text + "' is none of";
    for (const auto& option : options)
        message += " " + option.localeIdentifier;
    throw CLI::ValidationError("--locale", message);
}

TerminalOptions::Command parseModel(const std::vector<std::string>& words) {
    if (words.size() == 1 && words[0] == "list")
        return ListModelsCommand{};
    if (words.size() == 2 && words[0] == "remove")
        return RemoveModelCommand{words[1]};
    if (words.size() == 1 && words[0] != "remove")
        return InstallModelCommand{words[0]};
    throw CLI::ValidationError("--model", "needs list, NAME or remove NAME");
}

SetCommand parseSet(const std::vector<std::string>& assignments) {
    SetCommand command;
    for (const auto& assignment : assignments) {
        const auto equals = assignment.find('=');
        if (equals == std::string::npos || equals == 0)
            throw CLI::ValidationError("--set", "'" + assignment + "' is not KEY=VALUE");
        command.values.emplace_back(assignment.substr(0, equals), assignment.substr(equals + 1));
    }
    return command;
}

} // namespace

std::variant<TerminalOptions, int> TerminalOptions::parse(int argc, const char* const* argv,
                                                          std::ostream& out, std::ostream& err) {
    CLI::App app("Live captions of English speech in the terminal, on this computer alone.",
                 "tessarune-terminal");
    app.set_version_flag("--version", std::string("tessarune-terminal ") + TESSARUNE_VERSION);
    app.footer(footer);

    TerminalOptions options;
    CaptionsCommand captions;
    std::string source = "system";
    std::string eventLog;
    std::vector<std::string> model;
    bool fast = false;
    std::vector<std::string> assignments;
    bool listSources = false;
    bool showSettings = false;

    auto* sourceOption = app.add_option("--source", source,
                                        "What to listen to: system (what the computer plays), mic, "
                                        "mic:NAME or file:PATH (anything that FFmpeg reads)")
                             ->type_name("SOURCE")
                             ->capture_default_str();
    app.add_flag("--fast", fast,
                 "With file:PATH: as fast as the recogniser goes, not at real speed");
    auto* list =
        app.add_flag("--list-sources", listSources, "List microphones and outputs, and end");
    app.add_option("--locale", captions.locale,
                   "The English that is spoken: en-US, en-GB, en-AU, …")
        ->capture_default_str();
    app.add_option("--event-log", eventLog,
                   "Write the recogniser's events there, for tessarune --replay")
        ->type_name("PATH");
    auto* modelOption = app.add_option("--model", model,
                                       "list, NAME (download it) or remove NAME: the speech models")
                            ->type_name("NAME")
                            ->expected(1, 2);
    auto* settingsOption = app.add_flag("--settings", showSettings,
                                        "Show all settings, those that were changed with a *");
    auto* setOption =
        app.add_option("--set", assignments, "Change a setting; may be given several times")
            ->type_name("KEY=VALUE")
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_flag("--json", options.json, "One JSON object a change instead of text");
    app.add_flag("--quiet", options.quiet, "No status lines");
    list->excludes(modelOption, settingsOption, setOption);
    settingsOption->excludes(modelOption, setOption);
    setOption->excludes(modelOption);

    try {
        app.parse(argc, argv);
        captions.source = parseSource(source);
        captions.sourceWasChosen = sourceOption->count() > 0;
        captions.locale = checkedLocale(captions.locale);
        if (!eventLog.empty())
            captions.eventLog = eventLog;
        auto* file = std::get_if<FileSource>(&captions.source);
        if (fast && !file)
            throw CLI::ValidationError("--fast", "is for --source file:PATH");
        if (file)
            file->fast = fast;
        options.command = std::move(captions);
        if (listSources)
            options.command = ListSourcesCommand{};
        if (!model.empty())
            options.command = parseModel(model);
        if (showSettings)
            options.command = ShowSettingsCommand{};
        if (!assignments.empty())
            options.command = parseSet(assignments);
    } catch (const CLI::ParseError& error) {
        const bool asked = error.get_exit_code() == 0; // --help and --version
        app.exit(error, out, err);
        return static_cast<int>(asked ? ExitStatus::ok : ExitStatus::usage);
    }
    return options;
}

} // namespace tessarune
