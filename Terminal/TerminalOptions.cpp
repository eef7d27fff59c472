#include "Terminal/TerminalOptions.h"

#include "Terminal/ExitStatus.h"
#include "Terminal/HelpText.h"
#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <algorithm>

namespace tessarune {

namespace {

using SourceChoice = std::variant<AudioSource, FileSource>;

SourceChoice parseSource(const std::string& text) {
    if (text == "system")
        return AudioSource::systemAudio();
    if (text == "mic")
        return AudioSource::microphone();
    if (text == "-" || text == "file:-")
        return FileSource{FileSource::standardInput};
    if (text.starts_with("mic:") && !Text::trimmed(text.substr(4)).empty())
        return AudioSource::microphone(text.substr(4));
    if (text.starts_with("file:") && text.size() > 5)
        return FileSource{text.substr(5)};
    throw UsageProblem(
        localized("--source takes system, mic, mic:NAME, file:PATH or -, not '%@'.", {text}));
}

/// Returns the recogniser's identifier of a locale. `text` may be in upper or lower case, and may
/// have "_" for "-".
std::string checkedLocale(const std::string& text) {
    std::string wanted = Text::lowercased(text);
    std::ranges::replace(wanted, '_', '-');
    std::vector<std::string> known;
    for (const auto& option : ModelCatalog::recognitionOptions()) {
        if (Text::lowercased(option.localeIdentifier) == wanted)
            return option.localeIdentifier;
        known.push_back(option.localeIdentifier);
    }
    throw UsageProblem(localized("--locale takes one of %@, not '%@'.",
                                 {Text::joined(known, localized(", ")), text}));
}

std::string checkedTarget(const std::string& option, const std::string& text) {
    if (auto id = TranslationSupport::targetLanguageID(text))
        return *id;
    std::vector<std::string> known;
    for (const auto& language : TranslationSupport::targetLanguages())
        known.push_back(language.id);
    throw UsageProblem(localized("%@ does not know the language '%@'. It knows %@.",
                                 {option, text, Text::joined(known, localized(", "))}));
}

/// Returns the ID of the target; empty if nothing should be translated.
std::string checkedTargetOrNone(const std::string& text) {
    const std::string word = Text::lowercased(text);
    return word == "off" || word == "none" ? std::string() : checkedTarget("--target", text);
}

TerminalOptions::Command parseModel(const std::vector<std::string>& words) {
    if (words.size() == 1 && words[0] == "list")
        return ListModelsCommand{};
    if (words.size() == 2 && words[0] == "remove")
        return RemoveModelCommand{words[1]};
    if (words.size() == 1 && words[0] != "remove")
        return InstallModelCommand{words[0]};
    throw UsageProblem(localized("--model takes list, NAME or remove NAME."));
}

TerminalOptions::Command parseLanguages(const std::vector<std::string>& words) {
    constexpr const char* option = "--languages";
    if (words.size() <= 1 && (words.empty() || words[0].empty() || words[0] == "list"))
        return ListLanguagesCommand{};
    if (words.size() == 2 && words[0] == "download")
        return DownloadLanguageCommand{checkedTarget(option, words[1])};
    if (words.size() == 2 && words[0] == "remove")
        return RemoveLanguageCommand{checkedTarget(option, words[1])};
    throw UsageProblem(localized("--languages takes nothing, list, download LANG or remove LANG."));
}

SetCommand parseSet(const std::vector<std::string>& assignments) {
    SetCommand command;
    for (const auto& assignment : assignments) {
        const auto equals = assignment.find('=');
        if (equals == std::string::npos || equals == 0)
            throw UsageProblem(localized("--set takes KEY=VALUE, not '%@'.", {assignment}));
        if (Text::trimmed(assignment.substr(equals + 1)).empty())
            throw UsageProblem(localized("--set %@ has no value.", {assignment}));
        command.values.emplace_back(assignment.substr(0, equals), assignment.substr(equals + 1));
    }
    return command;
}

/// The values of the command line before they are interpreted.
struct Words {
    std::string source = "system";
    std::string locale;
    std::string eventLog;
    bool overwrites = false;
    std::string target;
    std::string testTranslation;
    std::vector<std::string> model;
    std::vector<std::string> languages;
    std::vector<std::string> assignments;
    bool fast = false;
    bool noRecord = false;
    bool listSources = false;
    bool showSettings = false;
    std::vector<CLI::Option*> captions; ///< options that are valid only for captions
};

void declareCaptions(CLI::App& app, Words& words) {
    const auto add = [&](CLI::Option* option) {
        option->group(localized("Captions"));
        words.captions.push_back(option);
        return option;
    };
    add(app.add_option(
            "--source", words.source,
            localized("What to listen to: system (what the computer plays; the default), mic, "
                      "mic:NAME, file:PATH (any sound or video file), or - (standard input)")))
        ->type_name("SOURCE");
    add(app.add_flag("--fast", words.fast,
                     localized("Caption a file as fast as possible instead of in real time")));
    add(app.add_option(
            "--locale", words.locale,
            localized("The variety of English that is spoken: en-US, en-GB, en-AU or another")))
        ->type_name("LOCALE");
    add(app.add_option(
            "--target", words.target,
            localized("The language to translate into, or off; default: from the settings")))
        ->type_name("LANG");
    add(app.add_flag("--no-record", words.noRecord,
                     localized("Save neither sound nor transcript of this session")));
    add(app.add_option(
            "--event-log", words.eventLog,
            localized("Write the recogniser's results to a file, for tessarune --replay")))
        ->type_name("PATH");
    add(app.add_flag("--overwrite", words.overwrites,
                     localized("Replace an event log that already exists")));
}

void declareOutput(CLI::App& app, TerminalOptions& options) {
    const std::string group = localized("Output");
    app.add_flag("--json", options.json,
                 localized("Print JSON, one object per line, instead of text"))
        ->group(group);
    app.add_flag("--quiet", options.quiet, localized("Print no status lines"))->group(group);
    app.set_help_flag("-h,--help", localized("Print this help and exit"))->group(group);
    app.set_version_flag("--version", "tessarune-terminal " TESSARUNE_VERSION,
                         localized("Print the version and exit"))
        ->group(group);
}

void declareCommands(CommandOptions& options, Words& words) {
    options.beginGroup(localized("Sound, models and languages"));
    options.flag("--list-sources", words.listSources, localized("List what can be listened to"));
    options
        .words("--model", words.model, "NAME",
               localized("The speech models: list, NAME (download it) or remove NAME"))
        ->expected(1, 2);
    options
        .words("--languages", words.languages, "[LANG]",
               localized("The languages to translate into: list (the default), download "
                         "LANG or remove LANG"))
        ->expected(0, 2);
    options.words(
        "--test-translation", words.testTranslation, "LANG",
        localized("Translate a sample; downloads the translation model if it is missing"));
    options.beginGroup(localized("Settings"));
    options.flag("--settings", words.showSettings,
                 localized("Show all settings, what they do and their possible values"));
    options
        .words("--set", words.assignments, "KEY=VALUE",
               localized("Change a setting; may be given several times"))
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

/// An empty value comes from an unset shell variable and is never intended.
void refuseEmptyWords(int argc, const char* const* argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        const bool isOption = word.starts_with("--");
        if (Text::trimmed(word).empty())
            throw UsageProblem(i > 1 ? localized("There is an empty value after %@.", {argv[i - 1]})
                                     : localized("The first word of the command line is empty."));
        if (isOption && word.find('=') == word.size() - 1)
            throw UsageProblem(
                localized("%@ has no value.", {std::string(word.substr(0, word.size() - 1))}));
    }
}

/// Marks a word as a value. No user types this character.
constexpr char valueMark = '\1';

std::string withoutMark(std::string word) {
    if (word.starts_with(valueMark))
        word.erase(0, 1);
    return word;
}

/// The command line without "--". The words after "--" are not options, but may still be values of
/// the option before "--". The parser would not allow that, so these words are marked as values.
std::vector<std::string> withMarkedValues(int argc, const char* const* argv) {
    std::vector<std::string> words;
    bool areValues = false;
    for (int i = 0; i < argc; ++i) {
        if (!areValues && std::string_view(argv[i]) == "--")
            areValues = true;
        else
            words.push_back((areValues ? std::string(1, valueMark) : "") + argv[i]);
    }
    return words;
}

void parseWords(CLI::App& app, const std::vector<std::string>& words) {
    for (CLI::Option* option : app.get_options()) {
        if (option->get_items_expected_max() > 0)
            option->transform(withoutMark);
    }
    std::vector<const char*> pointers;
    pointers.reserve(words.size());
    for (const std::string& word : words)
        pointers.push_back(word.c_str());
    app.parse(static_cast<int>(pointers.size()), pointers.data());
    if (const std::vector<std::string> strays = app.remaining(); !strays.empty())
        throw UsageProblem(localized("'%@' is not understood.", {withoutMark(strays.front())}));
}

CaptionsCommand captionsCommand(const Words& words, bool sourceWasChosen) {
    CaptionsCommand command;
    command.source = parseSource(words.source);
    command.sourceWasChosen = sourceWasChosen;
    command.records = !words.noRecord;
    if (!words.locale.empty())
        command.locale = checkedLocale(words.locale);
    if (!words.target.empty())
        command.target = checkedTargetOrNone(words.target);
    if (!words.eventLog.empty())
        command.eventLog = words.eventLog;
    if (words.overwrites && !command.eventLog)
        throw UsageProblem(
            localized("--overwrite is for an event log: it needs --event-log PATH."));
    command.overwrites = words.overwrites;
    auto* file = std::get_if<FileSource>(&command.source);
    if (words.fast && !file)
        throw UsageProblem(localized("--fast is for files: it needs --source file:PATH."));
    if (file)
        file->fast = words.fast;
    return command;
}

TerminalOptions::Command commandOf(const CLI::App& app, const Words& words,
                                   const HistoryOptions& history) {
    if (const auto command = history.command())
        return *command;
    if (words.listSources)
        return ListSourcesCommand{};
    if (isGiven(app.get_option("--model")))
        return parseModel(words.model);
    if (isGiven(app.get_option("--languages")))
        return parseLanguages(words.languages);
    if (isGiven(app.get_option("--test-translation")))
        return TestTranslationCommand{checkedTarget("--test-translation", words.testTranslation)};
    if (words.showSettings)
        return ShowSettingsCommand{};
    if (isGiven(app.get_option("--set")))
        return parseSet(words.assignments);
    return captionsCommand(words, isGiven(app.get_option("--source")));
}

/// Describes the parser's problem in the program's own words. Of the parser's text only the
/// option's name is used.
std::string problemOf(const CLI::App& app, const std::vector<std::string>& words,
                      const CLI::ParseError& error) {
    std::string_view text = error.what();
    text.remove_prefix(std::min(text.find("--"), text.size()));
    const std::string name(text.substr(0, text.find_first_of(": =")));
    const CLI::Option* option = app.get_option_no_throw(name);
    if (!option)
        return localized("'%@' is not understood.", {name});
    if (option->get_items_expected_max() == 0)
        return localized("%@ takes no value.", {name});
    const auto maximum = static_cast<std::size_t>(option->get_items_expected_max());
    if (option->count() > maximum)
        return option->count() % maximum == 0 ? localized("%@ is given more than once.", {name})
                                              : localized("%@ has too many values.", {name});
    const auto isDashed = [&](const std::string& word) {
        return word.starts_with('-') && word != name;
    };
    return std::any_of(std::ranges::find(words, name), words.end(), isDashed)
               ? localized("%@ needs a value. Write -- before a value that begins with a dash.",
                           {name})
               : localized("%@ needs a value.", {name});
}

int printUsageProblem(const std::string& problem, std::ostream& err) {
    err << "tessarune-terminal: " << Text::printable(problem) << "\n"
        << localized("--help lists the options.") << "\n";
    return static_cast<int>(ExitStatus::usage);
}

} // namespace

std::variant<TerminalOptions, int> TerminalOptions::parse(int argc, const char* const* argv,
                                                          std::ostream& out, std::ostream& err) {
    CLI::App app("", "tessarune-terminal");
    app.allow_extras();
    TerminalOptions options;
    Words words;
    CommandOptions commands(app);
    HistoryOptions history;
    const std::vector<std::string> line = withMarkedValues(argc, argv);
    declareCaptions(app, words);
    history.declare(commands);
    declareCommands(commands, words);
    declareOutput(app, options);
    try {
        refuseEmptyWords(argc, argv);
        parseWords(app, line);
        commands.refuseClashes(words.captions);
        options.command = commandOf(app, words, history);
    } catch (const UsageProblem& problem) {
        return printUsageProblem(problem.what(), err);
    } catch (const CLI::CallForHelp&) {
        out << helpText(app);
        return static_cast<int>(ExitStatus::ok);
    } catch (const CLI::CallForVersion& version) {
        out << version.what() << "\n";
        return static_cast<int>(ExitStatus::ok);
    } catch (const CLI::ParseError& error) {
        return printUsageProblem(problemOf(app, line, error), err);
    }
    return options;
}

} // namespace tessarune
