// A whole session of the terminal program on a computer without a network.
#include "tests/support/FileContents.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WordErrorRate.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace tessarune::testing {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr const char* unshareProgram = "/usr/bin/unshare";

/// Runs programs in a network namespace whose only interface, the loopback, is down. The kernel
/// counts what a program tries to send there, including DNS queries.
class OfflineSessionTests : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const char* how : {"--net", "--map-root-user"}) {
            unshare_ = {how, "--net"};
            if (run(unshareProgram, {how, "--net", "true"}, folder.path(), {}).status == 0)
                return;
        }
        GTEST_SKIP() << "this system permits no network namespace";
    }

    /// Runs the terminal program and asks it to end after `seconds`.
    ProgramRun terminal(const std::vector<std::string>& arguments, const char* seconds = "240") {
        std::vector<std::string> words = unshare_;
        for (
            const char* word :
            {"sh", "-c",
             R"(timeout "$@"; status=$?; cat /proc/net/snmp /proc/net/snmp6 >counts; exit $status)",
             "sh", seconds, TESSARUNE_BIN "/tessarune-terminal"})
            words.emplace_back(word);
        words.insert(words.end(), arguments.begin(), arguments.end());
        return run(unshareProgram, words, folder.path(),
                   {"XDG_DATA_HOME=" + (folder / "data").string(),
                    "XDG_CONFIG_HOME=" + (folder / "config").string(), "LC_ALL=C",
                    "PULSE_SERVER=unix:/nowhere"});
    }

    /// How often the last program tried to send something, with or without a route.
    std::uint64_t attempts() const {
        std::uint64_t sum = 0;
        std::istringstream lines(contentsOf(folder / "counts"));
        std::vector<std::string> names;
        for (std::string line; std::getline(lines, line);) {
            std::istringstream words(line);
            const std::vector<std::string> found{std::istream_iterator<std::string>(words), {}};
            if (found[0] == "Ip6OutNoRoutes" || found[0] == "Ip6OutRequests")
                sum += std::stoull(found[1]);
            if (found[0] == "Ip:" && !names.empty() && names[0] == "Ip:") {
                for (std::size_t i = 1; i < found.size(); ++i)
                    if (names[i] == "OutNoRoutes" || names[i] == "OutRequests")
                        sum += std::stoull(found[i]);
            }
            names = found;
        }
        return sum;
    }

    TemporaryFolder folder;
    std::vector<std::string> unshare_;
};

TEST_F(OfflineSessionTests, ASessionWithoutANetworkIsCompleteAndSendsNothing) {
    const ProgramRun live = terminal({"--source", "file:" TESSARUNE_SAMPLE_SPEECH "/two_cities.wav",
                                      "--fast", "--target", "pt-BR", "--json"});
    ASSERT_EQ(live.status, 0) << live.error;
    EXPECT_EQ(attempts(), 0u);
    std::string captions;
    std::vector<std::string> translations;
    std::istringstream lines(live.output);
    for (std::string line; std::getline(lines, line);) {
        const Json object = Json::parse(line);
        if (object["type"] == "committed")
            captions += object["text"].get<std::string>() + " ";
        if (object["type"] == "translation")
            translations.push_back(object["text"]);
    }
    const std::string reference =
        contentsOf(fs::path(TESSARUNE_TEST_DATA) / "speech/two_cities.txt");
    EXPECT_LE(wordErrorRate(reference, captions), 0.15) << captions;
    ASSERT_FALSE(translations.empty());

    const Json recording = Json::parse(terminal({"--list", "--json"}).output);
    const std::string id = recording["id"].get<std::string>().substr(0, 8);
    const Json shown = Json::parse(terminal({"--show", id, "--json"}).output);
    for (const std::string& translation : translations)
        EXPECT_NE(shown["bilingualText"].get<std::string>().find(translation), std::string::npos)
            << translation;
    EXPECT_EQ(terminal({"--test-translation", "pt-BR"}).status, 0);
    EXPECT_EQ(attempts(), 0u);

    EXPECT_NE(terminal({"--languages", "download", "fr"}, "3").status, 0);
    EXPECT_GT(attempts(), 0u) << "a requested download is attempted, and counted";
}

} // namespace
} // namespace tessarune::testing
