#include "Tessarune/app/Application.h"
#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace tessarune {
namespace {

/// A program with its own settings and a shared data folder.
struct RecordingProgram {
    explicit RecordingProgram(const testing::TemporaryFolder& folder, const std::string& name)
        : paths(folder.path()),
          stored(files, folder.path() / (name + ".json")),
          settings(stored),
          gate(settings, stored, paths, name) {
        gate.onDecision = [this](const auto& found) { obstacles.push_back(found); };
    }

    PosixFileSystem files;
    TessarunePaths paths;
    JSONUserDefaults stored;
    AppSettings settings;
    RecordingGate gate;
    std::vector<RecordingGate::Obstacle> obstacles;
};

TEST(RecordingGateTests, OneProgramRecordsAtATimeAndAnotherAfterTheFirstHasLeftTheFolder) {
    const testing::TemporaryFolder folder;
    RecordingProgram first(folder, "first");
    RecordingProgram second(folder, "second");
    EXPECT_TRUE(first.gate.mayRecord());
    // Enabling recording later changes nothing while the other program holds the folder.
    second.settings.recordWhileCaptioning = false;
    second.settings.recordWhileCaptioning = true;
    EXPECT_FALSE(second.gate.mayRecord());
    ASSERT_EQ(second.obstacles.size(), 1u);
    EXPECT_EQ(second.obstacles[0].holder->program, "first");

    first.gate.leaveDataFolder();
    EXPECT_TRUE(second.gate.mayRecord());
    EXPECT_FALSE(second.obstacles.back().isThere()) << "the obstacle is gone";
    EXPECT_FALSE(first.gate.mayRecord());

    // A change holds the folder until the change is done, even if its program leaves the folder.
    second.gate.leaveDataFolder();
    auto change = first.gate.holdDataFolder();
    EXPECT_TRUE(first.gate.mayRecord());
    first.gate.leaveDataFolder();
    EXPECT_EQ(std::get<DataFolderLock::Holder>(second.gate.holdDataFolder()).program, "first");
    change = DataFolderHold();
    EXPECT_TRUE(std::holds_alternative<DataFolderHold>(second.gate.holdDataFolder()));
    EXPECT_FALSE(second.gate.hasDataFolder());
}

TEST(RecordingGateTests, ARunThatKeepsNothingLeavesTheSettingsAsTheyAre) {
    const testing::TemporaryFolder folder;
    RecordingProgram program(folder, "program");
    program.gate.recordNothing();
    EXPECT_FALSE(program.gate.mayRecord());
    EXPECT_FALSE(program.gate.recordsSessions());
    EXPECT_FALSE(program.gate.hasDataFolder());
    EXPECT_TRUE(*program.settings.recordWhileCaptioning);
    program.settings.diagnosticsLevel = DiagnosticsLevel::trace;
    EXPECT_EQ(*RecordingProgram(folder, "program").settings.diagnosticsLevel,
              DiagnosticsLevel::trace);
}

TEST(RecordingGateTests, NothingIsRecordedWhileTheSettingForItIsUnreadable) {
    const testing::TemporaryFolder folder;
    std::ofstream(folder.path() / "program.json") << R"({"recordWhileCaptioning": "perhaps"})";
    RecordingProgram program(folder, "program");
    EXPECT_FALSE(program.gate.mayRecord());
    ASSERT_EQ(program.obstacles.size(), 1u);
    EXPECT_FALSE(program.obstacles[0].doubt.empty());
    program.settings.recordWhileCaptioning = true;
    EXPECT_TRUE(program.gate.mayRecord());
}

TEST(RecordingGateTests, AProgramThatRecordsNothingRepairsTheDataFolderAndReleasesIt) {
    const testing::TemporaryFolder folder;
    for (const char* place : {"XDG_DATA_HOME", "XDG_CONFIG_HOME"})
        setenv(place, folder.path().c_str(), 1);
    SimulatedHost host(1000);
    Application program(host, "program");
    program.files.createDirectories(program.paths.recordings());
    EXPECT_FALSE(program.prepareToRecord().obstacle.isThere());
    EXPECT_TRUE(program.recording.hasDataFolder());
    program.recording.recordNothing();
    EXPECT_FALSE(program.prepareToRecord().obstacle.isThere());
    host.runUntilIdle();
    EXPECT_FALSE(program.recording.hasDataFolder());
}

} // namespace
} // namespace tessarune
