#include "Tessarune/session/LiveResourceCleanup.h"
#include "Tessarune/session/SystemAudioSilentStartPolicy.h"
#include "tests/simulation/SimulatedSession.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using simulation::SimulatedSession;

class LiveAudioInactivityAutoStopTests : public ::testing::Test {
  protected:
    void start(std::optional<double> timeout) {
        watch.start(timeout, [this](double idle, double limit) {
            firedAt.push_back(host.now());
            EXPECT_GE(idle, limit);
        });
    }
    SimulatedHost host{1000};
    LiveAudioInactivityAutoStop watch{host};
    std::vector<double> firedAt;
};

TEST_F(LiveAudioInactivityAutoStopTests, ReportsEachSilenceOnceAtTheFirstCheckAfterTheLimit) {
    double setBack = 0;
    watch.now = [&] { return host.now() - setBack; };
    start(15);
    for (double at = 1005; at < 1040; at += 5) {
        host.advanceTo(at);
        watch.noteActivity();
    }
    setBack = 60;
    host.advanceTo(1046);
    EXPECT_TRUE(firedAt.empty()) << "no time has passed on a clock that is set back";
    setBack = 0;
    host.advanceTo(1100);
    EXPECT_EQ(firedAt, std::vector<double>{1050});
    watch.noteActivity(); // watches again
    host.advanceTo(1200);
    EXPECT_EQ(firedAt, (std::vector<double>{1050, 1115}));
    watch.noteActivity();
    host.sleepComputer(100);
    host.advanceTo(1305);
    EXPECT_EQ(firedAt.size(), 2U) << "time asleep does not count as silence";
    watch.stop();
    watch.noteActivity();
    host.advanceTo(2000);
    EXPECT_EQ(firedAt.size(), 2U);
    for (const std::optional<double> never : {std::optional<double>(), std::optional<double>(0)}) {
        start(never);
        host.advanceBy(100);
        EXPECT_EQ(firedAt.size(), 2U);
    }
}

TEST(SystemAudioSilentStartPolicyTests, ASilentStartRecordsADenialUnlessPermissionWasGranted) {
    using Status = PermissionsManager::Status;
    SimulatedSession session;
    const auto warning = [&](const AudioSource& source) {
        return SystemAudioSilentStartPolicy::recordSilentStart(session.permissions, source);
    };
    EXPECT_TRUE(warning(AudioSource::systemAudio()));
    EXPECT_EQ(*session.permissions.systemAudio, Status::denied);
    session.permissions.latch(PermissionsManager::Key::systemAudioStatus, Status::granted);
    EXPECT_TRUE(warning(AudioSource::systemAudio()));
    EXPECT_EQ(*session.permissions.systemAudio, Status::granted);
    EXPECT_FALSE(warning(AudioSource::microphone()));
}

TEST(LiveResourceCleanupTests, EmptiesTheDebugLogAndReturnsMemoryInTheBackground) {
    SimulatedHost host;
    simulation::FaultyFileSystem files;
    files.setContents("/run/me/tessarune.log", "old");
    bool onMain = true;
    const LiveResourceCleanup::Resources resources{
        files, host.serialQueue("utility", QueuePriority::utility),
        [&] { onMain = host.isOnMainQueue(); }, "/run/me/tessarune.log"};
    LiveResourceCleanup::releaseIdleResources(resources);
    EXPECT_TRUE(onMain) << "memory is returned later, on the queue";
    host.runUntilIdle();
    EXPECT_FALSE(onMain);
    EXPECT_EQ(files.contentsOf("/run/me/tessarune.log"), "");
    files.failFrom = 0;
    EXPECT_NO_THROW(LiveResourceCleanup::releaseIdleResources(resources));
    host.runUntilIdle();
}

} // namespace
} // namespace tessarune
