#include "Terminal/TerminalOptions.h"

#include "Terminal/ExitStatus.h"
#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace tessarune {

namespace {

constexpr const char* footer = R"(Examples:
  tessarune-terminal                                captions of what the computer plays
  tessarune-terminal --source mic                   captions of the default microphone
  tessarune-terminal --source file:talk.m4a --fast  captions of a file, as fast as possible
  tessarune-terminal --target pt-BR                 with a Portuguese translation
  tessarune-terminal --event-log talk.ndjson        keep the events for tessarune --replay
  tessarune-terminal --list                         the sessions that were recorded
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

void checkLocale(const std::string& text) {
    const auto& options = ModelCatalog::recognitionOptions();
    const bool known = std::any_of(options.begin(), options.end(), [&](const auto& option) {
        return option.localeIdentifier == text;
    });
    if (known)
        return;
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

std::string checkedTarget(const char* option, const std::string& text) {
    if (TranslationSupport::targetLanguage(text))
        return text;
    std::string message = "'" + text + "' is none of";
    for (const auto& language : TranslationSupport::targetLanguages())
        message += " " + language.id;
    throw CLI::ValidationError(option, message);
}

TerminalOptions::Command parseLanguages(const std::vector<std::string>& words) {
    constexpr const char* option = "--languages";
    if (words.size() <= 1 && (words.empty() || words[0].empty() || words[0] == "list"))
        return ListLanguagesCommand{};
    if (words.size() == 2 && words[0] == "download")
        return DownloadLanguageCommand{checkedTarget(option, words[1])};
    if (words.size() == 2 && words[0] == "remove")
        return RemoveLanguageCommand{checkedTarget(option, words[1])};
    throw CLI::ValidationError(option, "takes nothing, list, download LANG or remove LANG");
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

/// The words of the command line, before they mean anything.
struct Words {
    std::string source = "system";
    std::string locale;
    std::string eventLog;
    bool overwrites = false;
    std::string show;
    std::string target;
    std::string testTranslation;
    std::vector<std::string> model;
    std::vector<std::string> languages;
    std::vector<std::string> assignments;
    bool fast = false;
    bool noRecord = false;
    bool listSources = false;
    bool listRecordings = false;
    bool showSettings = false;
    CLI::Option* sourceOption = nullptr;
    CLI::Option* languagesOption = nullptr;
};

void declareCaptions(CLI::App& app, Words& words) {
    words.sourceOption = app.add_option("--source", words.source,
                                        "What to listen to: system (what the computer plays), mic, "
                                        "mic:NAME or file:PATH (anything that FFmpeg reads)")
                             ->type_name("SOURCE")
                             ->capture_default_str();
    app.add_flag("--fast", words.fast,
                 "With file:PATH: as fast as the recogniser goes, not at real speed");
    app.add_option("--locale", words.locale, "The English that is spoken: en-US, en-GB, en-AU, …")
        ->type_name("LOCALE");
    app.add_option("--target", words.target,
                   "The language to translate into, or off; without it as in the settings")
        ->type_name("LANG");
    app.add_flag("--no-record", words.noRecord,
                 "Keep neither sound nor transcript of this session");
    app.add_option("--event-log", words.eventLog,
                   "Write the recogniser's events there, for tessarune --replay")
        ->type_name("PATH");
    app.add_flag("--overwrite", words.overwrites, "Replace an event log that is there already");
}

void declareCommands(CLI::App& app, Words& words) {
    CLI::Option_group& commands = *app.add_option_group("Instead of captions");
    commands.require_option(0, 1);
    commands.add_flag("--list-sources", words.listSources, "List what can be listened to");
    commands.add_flag("--list", words.listRecordings, "List the recorded sessions");
    commands
        .add_option("--show", words.show,
                    "Print a session's transcript, by its ID or the beginning of it")
        ->type_name("ID");
    commands
        .add_option("--model", words.model,
                    "list, NAME (download it) or remove NAME: the speech models")
        ->type_name("NAME")
        ->expected(1, 2);
    words.languagesOption =
        commands
            .add_option("--languages", words.languages,
                        "The languages to translate into: list them, download LANG or remove LANG")
            ->type_name("LANG")
            ->expected(0, 2);
    commands
        .add_option("--test-translation", words.testTranslation,
                    "Translate a sample, and download the language first if it is missing")
        ->type_name("LANG");
    commands.add_flag("--settings", words.showSettings,
                      "Show all settings, those that were changed with a *");
    commands.add_option("--set", words.assignments, "Change a setting; may be given several times")
        ->type_name("KEY=VALUE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

CaptionsCommand captionsCommand(const Words& words) {
    CaptionsCommand command;
    command.source = parseSource(words.source);
    command.sourceWasChosen = words.sourceOption->count() > 0;
    command.records = !words.noRecord;
    if (!words.locale.empty()) {
        checkLocale(words.locale);
        command.locale = words.locale;
    }
    if (!words.target.empty())
        command.target =
            words.target == "off" ? std::string() : checkedTarget("--target", words.target);
    if (!words.eventLog.empty())
        command.eventLog = words.eventLog;
    command.overwrites = words.overwrites;
    auto* file = std::get_if<FileSource>(&command.source);
    if (words.fast && !file)
        throw CLI::ValidationError("--fast", "is for --source file:PATH");
    if (file)
        file->fast = words.fast;
    return command;
}

TerminalOptions::Command command(const Words& words) {
    if (words.listSources)
        return ListSourcesCommand{};
    if (words.listRecordings)
        return ListRecordingsCommand{};
    if (!words.show.empty())
        return ShowRecordingCommand{words.show};
    if (!words.model.empty())
        return parseModel(words.model);
    if (words.languagesOption->count() > 0)
        return parseLanguages(words.languages);
    if (!words.testTranslation.empty())
        return TestTranslationCommand{checkedTarget("--test-translation", words.testTranslation)};
    if (words.showSettings)
        return ShowSettingsCommand{};
    if (!words.assignments.empty())
        return parseSet(words.assignments);
    return captionsCommand(words);
}

} // namespace

std::variant<TerminalOptions, int> TerminalOptions::parse(int argc, const char* const* argv,
                                                          std::ostream& out, std::ostream& err) {
    CLI::App app("Live captions of English speech in the terminal, on this computer alone.",
                 "tessarune-terminal");
    app.set_version_flag("--version", std::string("tessarune-terminal ") + TESSARUNE_VERSION);
    app.footer(footer);
    TerminalOptions options;
    Words words;
    declareCaptions(app, words);
    app.add_flag("--json", options.json, "One JSON object a change instead of text");
    app.add_flag("--quiet", options.quiet, "No status lines");
    declareCommands(app, words);
    try {
        app.parse(argc, argv);
        options.command = tessarune::command(words);
    } catch (const CLI::ParseError& error) {
        const bool asked = error.get_exit_code() == 0; // --help and --version
        app.exit(error, out, err);
        return static_cast<int>(asked ? ExitStatus::ok : ExitStatus::usage);
    }
    return options;
}

} // namespace tessarune
