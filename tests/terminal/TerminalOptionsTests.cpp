#include "Terminal/ExitStatus.h"
#include "Terminal/TerminalOptions.h"
#include "TessaruneCore/text/TextColumns.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tessarune {
namespace {

struct Parsed {
    std::optional<TerminalOptions> options;
    int status = -1;
    std::string out;
    std::string err;
};

Parsed parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "tessarune-terminal");
    std::ostringstream out;
    std::ostringstream err;
    auto result =
        TerminalOptions::parse(static_cast<int>(arguments.size()), arguments.data(), out, err);
    Parsed parsed;
    if (auto* options = std::get_if<TerminalOptions>(&result))
        parsed.options = *options;
    else
        parsed.status = std::get<int>(result);
    parsed.out = out.str();
    parsed.err = err.str();
    return parsed;
}

TEST(TerminalOptionsTests, ReadsEachKindOfSource) {
    const auto source = [](const char* text) {
        const Parsed parsed = parse({"--source", text});
        return std::get<CaptionsCommand>(parsed.options.value().command).source;
    };
    EXPECT_EQ(std::get<AudioSource>(source("system")), AudioSource::systemAudio());
    EXPECT_EQ(std::get<AudioSource>(source("mic")), AudioSource::microphone());
    EXPECT_EQ(std::get<AudioSource>(source("mic:USB: desk")), AudioSource::microphone("USB: desk"));
    EXPECT_EQ(std::get<FileSource>(source("file:a b/c:d.wav")).path, "a b/c:d.wav");
    EXPECT_EQ(std::get<FileSource>(source("-")).path, "/dev/stdin");

    const auto plain = std::get<CaptionsCommand>(parse({}).options.value().command);
    EXPECT_EQ(std::get<AudioSource>(plain.source), AudioSource::systemAudio());
    EXPECT_FALSE(plain.sourceWasChosen);
    EXPECT_FALSE(plain.locale) << "without an option, the settings decide";
    EXPECT_TRUE(plain.records);
    const auto asked =
        std::get<CaptionsCommand>(parse({"--locale", "en_in", "--no-record"}).options->command);
    EXPECT_EQ(asked.locale, "en-IN");
    EXPECT_FALSE(asked.records);
}

/// A mistyped command must not make the program listen.
TEST(TerminalOptionsTests, RefusesWhatMakesNoSenseAndSaysWhy) {
    const struct {
        std::vector<const char*> arguments;
        const char* mentions;
    } cases[] = {
        {{"--source", "mic:"}, "mic:"},
        {{"--source", "file:"}, "file:"},
        {{"--fast"}, "--fast"},
        {{"--overwrite"}, "--event-log"},
        {{"--locale", "fr-FR"}, "en-GB"},
        {{"--model", "remove"}, "remove NAME"},
        {{"--list", "--show", "AB"}, "--show"},
        {{"--list", "--source", "mic"}, "--source"},
        {{"--target", "xx"}, "pt-BR"},
        {{"--languages", "download"}, "download LANG"},
        {{"--diagnostics", "pack", "Live-1", "-o", "-"}, "can only write to a file"},
        {{"--languages", "download", "ja", "fr"}, "--languages"},
        {{"--test-translation", "en"}, "zh-Hans"},
        {{"--lis"}, "--lis"},
        {{"-x"}, "-x"},
        {{"stray"}, "stray"},
        {{"--json", "stray\033[2J"}, "stray\uFFFD[2J"},
        {{"--source", "mic", "--source", "system"}, "--source is given more than once"},
        {{"--json", "--show"}, "--show needs a value"},
        {{"--play", "AB", "--from", "1:75"}, "1:75"},
        {{"--play", "AB", "--from", "inf"}, "inf"},
        {{"--from", "10"}, "--play"},
        {{"--fast=please"}, "--fast takes no value"},
        {{"--set", "=1"}, "=1"},
        {{"--set", "a="}, "a="},
        {{""}, "empty"},
        {{"--list", "--", "--json"}, "--json"},
        {{"--note", "AB", "-rf"},
         "--note needs a value. Write -- before a value that begins with a dash"},
        {{"--note", "AB", "two", "words"}, "--note has too many values"},
    };
    for (const auto& c : cases) {
        const Parsed parsed = parse(c.arguments);
        EXPECT_EQ(parsed.status, static_cast<int>(ExitStatus::usage)) << c.mentions;
        EXPECT_NE(parsed.err.find(c.mentions), std::string::npos) << parsed.err;
    }
    for (const char* option : {"--source", "--locale", "--target", "--event-log", "--show",
                               "--model", "--languages", "--test-translation", "--set"}) {
        for (const std::string value : {"", " ", "="}) {
            const std::string joined = option + value;
            const Parsed parsed =
                value == "=" ? parse({joined.c_str()}) : parse({option, value.c_str()});
            EXPECT_EQ(parsed.status, static_cast<int>(ExitStatus::usage)) << joined;
            EXPECT_NE(parsed.err.find(option), std::string::npos) << parsed.err;
        }
    }
}

TEST(TerminalOptionsTests, HelpAndVersionFitEightyColumnsAndSucceed) {
    for (const char* option : {"--help", "-h", "--version"}) {
        const Parsed parsed = parse({option});
        EXPECT_EQ(parsed.status, 0);
        EXPECT_NE(parsed.out.find("tessarune-terminal"), std::string::npos);
        EXPECT_EQ(parsed.err, "");
        std::istringstream lines(parsed.out);
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(Text::columns(line), 80u) << line;
    }
    const std::string help = parse({"--help"}).out;
    for (const char* option : {"--source SOURCE", "--set KEY=VALUE", "-h --help", "Examples"})
        EXPECT_NE(help.find(option), std::string::npos) << option;
}

TEST(TerminalOptionsTests, ReadsTheTargetAndTheCommandsOfModelsAndLanguages) {
    const auto command = [](std::vector<const char*> arguments) {
        return parse(std::move(arguments)).options.value().command;
    };
    const auto target = [&](std::vector<const char*> arguments) {
        return std::get<CaptionsCommand>(command(std::move(arguments))).target;
    };
    EXPECT_EQ(target({}), std::nullopt) << "without an option, the settings decide";
    EXPECT_EQ(target({"--target", "zh_tw"}), "zh-Hant");
    EXPECT_EQ(target({"--target", "Off"}), "");
    EXPECT_EQ(target({"--target", "none"}), "");
    EXPECT_TRUE(std::holds_alternative<ListLanguagesCommand>(command({"--languages"})));
    EXPECT_EQ(
        std::get<DownloadLanguageCommand>(command({"--languages", "download", "ja", "--quiet"})).id,
        "ja");
    EXPECT_EQ(std::get<InstallModelCommand>(command({"--model", "small"})).name, "small");
    EXPECT_EQ(std::get<TestTranslationCommand>(command({"--test-translation", "ja"})).target, "ja");
}

TEST(TerminalOptionsTests, AfterTwoDashesEverythingIsAValue) {
    const Parsed noted = parse({"--json", "--note", "AB", "--", "--list"});
    const auto command = noted.options.value().command;
    EXPECT_EQ(std::get<SetNoteCommand>(std::get<HistoryCommand>(command)).note, "--list");
    EXPECT_TRUE(noted.options->json);
}

TEST(TerminalOptionsTests, AssignmentsKeepTheirOrderAndEverythingAfterTheFirstEqualsSign) {
    const Parsed parsed = parse({"--set", "a=1", "--set", "b=x=y"});
    using Values = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ(std::get<SetCommand>(parsed.options->command).values,
              (Values{{"a", "1"}, {"b", "x=y"}}));
}

} // namespace
} // namespace tessarune
