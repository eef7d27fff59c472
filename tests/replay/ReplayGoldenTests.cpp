// Runs the program on every case of tests/data/replay; the README there says what a case is.
#include "tests/support/FileContents.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace tessarune::testing {
namespace {

namespace fs = std::filesystem;

const fs::path program = fs::path(TESSARUNE_BIN) / "tessarune";
const fs::path cases = fs::path(TESSARUNE_TEST_DATA) / "replay";
const std::vector<std::string> plain = {"LC_ALL=C", "TZ=UTC"};

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
    return text;
}

std::vector<std::string> discovered() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(cases))
        if (entry.path().extension() == ".expected")
            names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

/// The results of a replay: its output, and each file of its timeline folder by name.
struct Outcome {
    std::string output;
    std::map<std::string, std::string> files;
};

Outcome replay(const std::string& name, const std::vector<std::string>& environment) {
    TemporaryFolder out;
    std::vector<std::string> arguments = {"--replay", name.substr(0, name.find('@')) + ".ndjson"};
    const fs::path options = cases / (name + ".args");
    if (fs::exists(options)) {
        std::istringstream lines(contentsOf(options));
        for (std::string line; std::getline(lines, line);)
            arguments.push_back(replaced(line, "{out}", out.path().string()));
    }
    const ProgramRun result = run(program, arguments, cases, environment);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error, "");

    Outcome outcome{replaced(result.output, out.path().string(), "{out}"), {}};
    for (const auto& entry : fs::recursive_directory_iterator(out.path()))
        if (entry.is_regular_file())
            outcome.files[entry.path().filename().string()] = contentsOf(entry.path());
    return outcome;
}

/// Parses with the keys in the file's order, so that the order is compared, too.
nlohmann::ordered_json timeline(const std::string& text) {
    static const std::regex identifier(
        "\"[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\"");
    return nlohmann::ordered_json::parse(std::regex_replace(text, identifier, "\"<uuid>\""));
}

std::map<std::string, fs::path> expectedFiles(const std::string& name) {
    std::map<std::string, fs::path> files;
    const std::string start = name + ".timeline-";
    for (const auto& entry : fs::directory_iterator(cases)) {
        const std::string file = entry.path().filename().string();
        if (file.rfind(start, 0) == 0)
            files[file.substr(name.size() + 1)] = entry.path();
    }
    return files;
}

class ReplayGolden : public ::testing::TestWithParam<std::string> {};

TEST_P(ReplayGolden, printsTheExpectedOutput) {
    const Outcome outcome = replay(GetParam(), plain);
    EXPECT_EQ(outcome.output, contentsOf(cases / (GetParam() + ".expected")));

    const auto files = expectedFiles(GetParam());
    EXPECT_EQ(outcome.files.size(), files.size());
    for (const auto& [file, path] : files) {
        ASSERT_TRUE(outcome.files.count(file)) << file << " was not written";
        EXPECT_EQ(timeline(outcome.files.at(file)), timeline(contentsOf(path))) << file;
    }
}

std::string caseName(const ::testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Cases, ReplayGolden, ::testing::ValuesIn(discovered()), caseName);

TEST(ReplayEnvironment, localeAndTimeZoneChangeNoByte) {
    // A locale with a decimal comma breaks careless printing. Where the system cannot create one,
    // only the time zone and the encoding differ.
    TemporaryFolder locales;
    run("/usr/bin/env",
        {"localedef", "-i", "de_DE", "-f", "UTF-8", (locales / "de_DE.UTF-8").string()},
        locales.path(), plain);
    const bool made = fs::exists(locales / "de_DE.UTF-8");
    const std::vector<std::string> foreign = {
        made ? "LC_ALL=de_DE.UTF-8" : "LC_ALL=C.UTF-8",
        "LOCPATH=" + locales.path().string(),
        "TZ=Asia/Shanghai",
        // A system library (p11-kit) keeps a foreign locale loaded, which counts as a leak.
        "ASAN_OPTIONS=detect_leaks=0",
    };
    for (const std::string& name : discovered()) {
        const Outcome here = replay(name, plain);
        const Outcome abroad = replay(name, foreign);
        EXPECT_EQ(here.output, abroad.output) << name;
        EXPECT_EQ(here.files, abroad.files) << name;
    }
}

} // namespace
} // namespace tessarune::testing
