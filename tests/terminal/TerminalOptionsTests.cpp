#include "Terminal/ExitStatus.h"
#include "Terminal/TerminalOptions.h"

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

    const auto plain = std::get<CaptionsCommand>(parse({}).options.value().command);
    EXPECT_EQ(std::get<AudioSource>(plain.source), AudioSource::systemAudio());
    EXPECT_FALSE(plain.sourceWasChosen);
    EXPECT_FALSE(plain.locale) << "the settings decide";
    EXPECT_TRUE(plain.records);
    const auto asked =
        std::get<CaptionsCommand>(parse({"--locale", "en-IN", "--no-record"}).options->command);
    EXPECT_EQ(asked.locale, "en-IN");
    EXPECT_FALSE(asked.records);
}

TEST(TerminalOptionsTests, RefusesWhatMakesNoSenseAndSaysWhy) {
    const struct {
        std::vector<const char*> arguments;
        const char* mentions;
    } cases[] = {
        {{"--source", "radio"}, "radio"},
        {{"--source", "mic:"}, "mic:"},
        {{"--source", "file:"}, "file:"},
        {{"--fast"}, "--fast"},
        {{"--locale", "fr-FR"}, "en-GB"},
        {{"--model", "remove"}, "remove NAME"},
        {{"--model", "tiny-en", "extra"}, "--model"},
        {{"--list-sources", "--model", "list"}, "--model"},
        {{"--list", "--show", "AB"}, "--show"},
        {{"--target", "xx"}, "pt-BR"},
        {{"--languages", "download"}, "download LANG"},
        {{"--languages", "remove", "xx"}, "pt-BR"},
        {{"--languages", "pt-BR"}, "download LANG"},
        {{"--languages", "--list"}, "--list"},
        {{"--test-translation", "en"}, "zh-Hans"},
        {{"--colour"}, "--colour"},
        {{"stray"}, "stray"},
    };
    for (const auto& c : cases) {
        const Parsed parsed = parse(c.arguments);
        EXPECT_EQ(parsed.status, static_cast<int>(ExitStatus::usage)) << c.mentions;
        EXPECT_NE((parsed.out + parsed.err).find(c.mentions), std::string::npos) << parsed.err;
    }
}

TEST(TerminalOptionsTests, HelpAndVersionEndWellOnStandardOutput) {
    for (const char* option : {"--help", "--version"}) {
        const Parsed parsed = parse({option});
        EXPECT_EQ(parsed.status, 0);
        EXPECT_NE(parsed.out.find("tessarune-terminal"), std::string::npos);
        EXPECT_EQ(parsed.err, "");
    }
}

TEST(TerminalOptionsTests, ReadsTheModelCommands) {
    EXPECT_TRUE(
        std::holds_alternative<ListModelsCommand>(parse({"--model", "list"}).options->command));
    EXPECT_EQ(std::get<InstallModelCommand>(parse({"--model", "small"}).options->command).name,
              "small");
    EXPECT_EQ(
        std::get<RemoveModelCommand>(parse({"--model", "remove", "small"}).options->command).name,
        "small");
}

TEST(TerminalOptionsTests, ReadsWhatToTranslateInto) {
    const auto command = [](std::vector<const char*> arguments) {
        return parse(std::move(arguments)).options.value().command;
    };
    const auto target = [&](std::vector<const char*> arguments) {
        return std::get<CaptionsCommand>(command(std::move(arguments))).target;
    };
    EXPECT_EQ(target({}), std::nullopt) << "the settings decide";
    EXPECT_EQ(target({"--target", "zh-Hant"}), "zh-Hant");
    EXPECT_EQ(target({"--target", "off"}), "");
    EXPECT_TRUE(std::holds_alternative<ListLanguagesCommand>(command({"--languages"})));
    EXPECT_TRUE(std::holds_alternative<ListLanguagesCommand>(command({"--languages", "--json"})));
    EXPECT_TRUE(std::holds_alternative<ListLanguagesCommand>(command({"--languages", "list"})));
    EXPECT_EQ(
        std::get<DownloadLanguageCommand>(command({"--languages", "download", "ja", "--quiet"})).id,
        "ja");
    EXPECT_EQ(std::get<RemoveLanguageCommand>(command({"--languages", "remove", "ja"})).id, "ja");
    EXPECT_EQ(std::get<TestTranslationCommand>(command({"--test-translation", "ja"})).target, "ja");
}

TEST(TerminalOptionsTests, AssignmentsKeepTheirOrderAndEverythingBehindTheFirstEqualsSign) {
    const Parsed parsed = parse({"--set", "a=1", "--set", "b=x=y", "--set", "c="});
    using Values = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ(std::get<SetCommand>(parsed.options->command).values,
              (Values{{"a", "1"}, {"b", "x=y"}, {"c", ""}}));
    EXPECT_EQ(parse({"--set", "=1"}).status, static_cast<int>(ExitStatus::usage));
    EXPECT_EQ(parse({"--set", "a=1", "--settings"}).status, static_cast<int>(ExitStatus::usage));
}

} // namespace
} // namespace tessarune
