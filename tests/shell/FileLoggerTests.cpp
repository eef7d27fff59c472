#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/simulation/FaultyFileSystem.h"
#include "tests/support/LoggedLines.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>

namespace tessarune {
namespace {

using Json = nlohmann::json;

constexpr double noon = 1760011200; // 2025-10-09 12:00 UTC
constexpr double day = 86400;

class FileLoggerTests : public ::testing::Test {
  protected:
    FileLoggerTests() { TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::verbose); }
    ~FileLoggerTests() override { TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::core); }

    std::vector<Json> lines() {
        host.runUntilIdle();
        return testing::loggedLines(files, paths.logs());
    }
    std::vector<std::string> events() {
        std::vector<std::string> names;
        for (const auto& line : lines())
            names.push_back(line["event"]);
        return names;
    }

    testing::TemporaryFolder folder;
    SimulatedHost host{noon};
    PosixFileSystem files;
    TessarunePaths paths{folder.path()};
    TessaruneFileLogger logger{host, files, paths};
};

TEST_F(FileLoggerTests, EventsBeyondTheQueueOfAStalledDiskAreLostAndCounted) {
    for (int i = 0; i < 5000; ++i)
        logger.event("crowd");
    EXPECT_EQ(lines().size(), 4096u);
    logger.event("room");
    EXPECT_EQ(lines().back()["lostEventsBefore"], 904);
}

TEST_F(FileLoggerTests, TheLevelDecidesWhichEventsAreWritten) {
    const struct {
        DiagnosticsLevel level;
        std::vector<std::string> expected;
    } cases[] = {
        {DiagnosticsLevel::off, {}},
        {DiagnosticsLevel::core, {"important"}},
        {DiagnosticsLevel::standard, {"important", "important"}},
        {DiagnosticsLevel::verbose, {"important", "important", "routine", "important"}},
    };
    for (const auto& c : cases) {
        TessaruneLog::setDiagnosticsLevel(c.level);
        logger.event("routine");
        logger.important("important");
        EXPECT_EQ(events(), c.expected) << storageName(c.level);
    }
}

TEST_F(FileLoggerTests, ALineHasItsFieldsAndItsSourceLocation) {
    logger.event("listen.start", {{"name", std::string("a\n\"b\"")},
                                  {"count", std::int64_t{3}},
                                  {"infinite", std::numeric_limits<double>::infinity()},
                                  {"broken", std::string("\xff")}});
    const auto all = lines();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0]["name"], "a\n\"b\"");
    EXPECT_EQ(all[0]["count"], 3);
    EXPECT_EQ(all[0]["mainThread"], true);
    EXPECT_FALSE(all[0].contains("infinite"));
    EXPECT_EQ(all[0]["source"].get<std::string>().rfind("FileLoggerTests.cpp:", 0), 0u);
    logger.event("listen.start", {{"source", std::string("systemAudio")}});
    const auto ofSound = lines().at(1);
    EXPECT_EQ(ofSound["source"], "systemAudio");
    EXPECT_TRUE(ofSound["sourceLocation"].get<std::string>().starts_with("FileLoggerTests.cpp:"));
}

TEST_F(FileLoggerTests, EachDayHasAFileAndOldFilesAreRemoved) {
    for (int i = 0; i < 20; ++i) {
        logger.event("day", {{"i", std::int64_t{i}}});
        host.advanceBy(day);
    }
    logger.bootstrap({});
    host.runUntilIdle();
    const auto names = files.list(paths.logs());
    EXPECT_EQ(names.size(), 15u) << "two weeks and today";
    EXPECT_EQ(events().back(), "app.bootstrap");
}

TEST_F(FileLoggerTests, DeletingEntriesKeepsTheOtherLines) {
    logger.event("a", {{"recordingID", std::string("ID-1")}});
    logger.event("b", {{"path", std::string("/some/\"quoted\" name.wav")}});
    TessaruneFileLogger other(host, files, paths); // the logger of a second running program
    other.event("c", {{"recordingID", std::string("ID-2")}});
    host.runUntilIdle();
    logger.deleteEntries({"ID-1"}, {"/some/\"quoted\" name.wav"});
    logger.event("d");
    host.runUntilIdle();
    other.event("e");
    host.runUntilIdle();
    EXPECT_EQ(events(), (std::vector<std::string>{"c", "d", "e"}));

    simulation::FaultyFileSystem disk;
    TessaruneFileLogger failing(host, disk, paths);
    disk.createDirectories(paths.logs());
    for (const char* id : {"ID-1", "ID-2"})
        failing.event("f", {{"recordingID", std::string(id)}});
    host.runUntilIdle();
    const auto log = paths.logs() / disk.list(paths.logs()).at(0);
    for (std::uint64_t i = 1; disk.contentsOf(log).find("ID-1") != std::string::npos; ++i) {
        disk.failAt = disk.operations + i;
        failing.deleteEntries({"ID-1"}, {});
        EXPECT_NE(disk.contentsOf(log).find("ID-2"), std::string::npos) << "operation " << i;
    }
}

TEST_F(FileLoggerTests, ADiskThatFailsIsReportedOnceAndNeverThrows) {
    std::vector<std::string> reports;
    TessaruneLog::setSink([&](auto, auto, const std::string& text) { reports.push_back(text); });
    std::ofstream(paths.logs()) << "a file where the folder should be";
    logger.event("lost");
    logger.event("lost too");
    host.runUntilIdle();
    std::filesystem::remove(paths.logs());
    logger.event("kept");
    EXPECT_EQ(events(), std::vector<std::string>{"kept"});
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].rfind("Tessarune file logger failed: ", 0), 0u);
    TessaruneLog::setSink({});
}

} // namespace
} // namespace tessarune
