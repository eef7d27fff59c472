#include "Terminal/HelpText.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/TextColumns.h"

#include <CLI/CLI.hpp>

namespace tessarune {

namespace {

constexpr std::size_t screenColumns = 80;
constexpr std::size_t optionColumns = 28;
constexpr std::size_t exampleColumns = 52;

/// Formats `left` and, from column `at` on, `right`, which is wrapped.
std::string twoColumns(const std::string& left, const std::string& right, std::size_t at) {
    std::string text;
    std::string line = Text::padded("  " + left, at - 1) + " ";
    if (Text::columns(line) > at) {
        text = "  " + left + "\n";
        line.assign(at, ' ');
    }
    for (const auto& part : Text::wrapped(right, screenColumns - at)) {
        text += line + part + "\n";
        line.assign(at, ' ');
    }
    return text;
}

std::string optionLines(const CLI::Option& option) {
    std::string name = option.get_name(false, true);
    std::ranges::replace(name, ',', ' ');
    if (option.get_items_expected_max() > 0)
        name += " " + option.get_type_name();
    return twoColumns(name, option.get_description(), optionColumns);
}

std::string examples() {
    const std::pair<const char*, std::string> rows[] = {
        {"", localized("what the computer plays")},
        {" --source mic", localized("the default microphone")},
        {" --source file:talk.m4a --fast", localized("a file, as fast as possible")},
        {" --target pt-BR", localized("translated into Portuguese")},
        {" --languages", localized("languages to translate into")},
        {" --list", localized("the recorded sessions")},
        {" --show 6943925E", localized("the transcript of a session")},
        {" --json | jq .text", localized("captions for another program")},
    };
    std::string text = "\n" + localized("%@:", {localized("Examples")}) + "\n";
    for (const auto& [arguments, meaning] : rows)
        text += twoColumns(std::string("tessarune-terminal") + arguments, meaning, exampleColumns);
    return text;
}

} // namespace

std::string helpText(const CLI::App& app) {
    std::string text;
    for (const auto& line :
         Text::wrapped(localized("Shows live captions of English speech in the terminal, made "
                                 "entirely on this computer. Without a command, it listens to what "
                                 "the computer plays and records the session."),
                       screenColumns))
        text += line + "\n";
    text +=
        "\n" + localized("Usage: %@", {"tessarune-terminal [" + localized("options") + "]"}) + "\n";
    for (const auto& group : app.get_groups()) {
        const auto options = app.get_options(
            [&](const CLI::Option* option) { return option->get_group() == group; });
        if (options.empty())
            continue;
        text += "\n" + localized("%@:", {group}) + "\n";
        for (const auto* option : options)
            text += optionLines(*option);
    }
    text += examples() + "\n";
    for (const auto& line : Text::wrapped(
             localized("After Ctrl-C the program shows the last words and ends; a second Ctrl-C "
                       "ends it at once."),
             screenColumns))
        text += line + "\n";
    return text;
}

} // namespace tessarune
