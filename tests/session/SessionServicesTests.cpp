#include "Tessarune/session/LiveCaptionCoreFactory.h"
#include "Tessarune/session/LiveResourceCleanup.h"
#include "Tessarune/session/SystemAudioSilentStartPolicy.h"
#include "tests/simulation/SimulatedSession.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using simulation::SimulatedSession;

TEST(LiveAudioInactivityAutoStopConfigurationTests, OddMinutesBecomeOne) {
    struct Case {
        std::int64_t chosen;
        std::int64_t minutes;
        std::optional<double> timeout;
    };
    for (const Case& c : {Case{0, 0, std::nullopt}, Case{1, 1, 60}, Case{5, 5, 300}, Case{7, 1, 60},
                          Case{20, 20, 1200}, Case{21, 1, 60}, Case{-5, 1, 60}}) {
        const LiveAudioInactivityAutoStopConfiguration configuration(c.chosen);
        EXPECT_EQ(configuration.minutes, c.minutes) << c.chosen;
        EXPECT_EQ(configuration.timeoutSeconds, c.timeout) << c.chosen;
    }
}

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

TEST_F(LiveAudioInactivityAutoStopTests, FiresOnceAtTheFirstLookAfterTheLimit) {
    start(12);
    host.advanceTo(1014.9);
    EXPECT_TRUE(firedAt.empty());
    host.advanceTo(1100);
    EXPECT_EQ(firedAt, std::vector<double>{1015});
    watch.noteActivity(); // at 1100: watches again
    host.advanceTo(1200);
    EXPECT_EQ(firedAt, (std::vector<double>{1015, 1115}));
}

TEST_F(LiveAudioInactivityAutoStopTests, ActivityPutsItOffAndAStopEndsIt) {
    start(10);
    for (double at = 1004; at < 1040; at += 4) {
        host.advanceTo(at);
        watch.noteActivity();
    }
    EXPECT_TRUE(firedAt.empty());
    watch.stop();
    watch.noteActivity();
    host.advanceTo(2000);
    EXPECT_TRUE(firedAt.empty());
    for (const std::optional<double> never : {std::optional<double>(), std::optional<double>(0)}) {
        start(never);
        EXPECT_FALSE(watch.isRunning());
    }
}

TEST_F(LiveAudioInactivityAutoStopTests, FollowsAnotherClock) {
    double clock = 50;
    watch.now = [&clock] { return clock; };
    start(10);
    clock = 59;
    watch.tick();
    clock = 40; // set back: no time has passed
    watch.tick();
    EXPECT_TRUE(firedAt.empty());
    clock = 60;
    watch.tick();
    EXPECT_EQ(firedAt.size(), 1U);
}

TEST(LiveAudioInactivitySleepTests, ASleepingComputerHearsNothingAndIsNotIdle) {
    /// A host whose computer sleeps: its clock jumps, and delayed calls come late.
    struct SleepyHost final : Host {
        double now() const override { return time; }
        double wallClock() const override { return time; }
        void post(Block) override {}
        DelayedCall after(double, Block block) override {
            next = std::move(block);
            return DelayedCall();
        }
        std::shared_ptr<SerialQueue> serialQueue(std::string_view, QueuePriority) override {
            return nullptr;
        }
        bool isOnMainQueue() const override { return true; }
        double time = 0;
        Block next;
    } host;
    LiveAudioInactivityAutoStop watch(host);
    int fired = 0;
    watch.start(60, [&fired](double, double) { ++fired; });
    const auto lookAt = [&host](double time) {
        host.time = time;
        const Block look = host.next;
        look();
    };
    lookAt(5);
    lookAt(3605); // an hour of sleep
    for (double time = 3610; time < 3655; time += 5)
        lookAt(time);
    EXPECT_EQ(fired, 0);
    lookAt(3660);
    EXPECT_EQ(fired, 1);
}

TEST(SessionDurationClockTests, CountsSecondsFromItsStart) {
    SimulatedHost host(100);
    SessionDurationClock clock(host);
    std::vector<double> ticks;
    clock.start([&](double seconds) { ticks.push_back(seconds); });
    host.advanceTo(101.5);
    clock.start([&](double seconds) { ticks.push_back(seconds * 10); });
    host.advanceTo(103.6);
    clock.stop();
    host.advanceTo(200);
    EXPECT_EQ(ticks, (std::vector<double>{1, 10, 20}));
}

TEST(SystemAudioSilentStartPolicyTests, DeniesUnlessSoundWasThereBefore) {
    using Status = PermissionsManager::Status;
    SimulatedSession session;
    const auto warning = [&](const AudioSource& source) {
        return SystemAudioSilentStartPolicy::warnsOfSilence(session.permissions, source);
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
    EXPECT_TRUE(onMain) << "not before the queue comes to it";
    host.runUntilIdle();
    EXPECT_FALSE(onMain);
    EXPECT_EQ(files.contentsOf("/run/me/tessarune.log"), "");
    files.failFrom = 0;
    EXPECT_NO_THROW(LiveResourceCleanup::releaseIdleResources(resources));
    host.runUntilIdle();
}

class LiveRecordingTrackerTests : public ::testing::Test {
  protected:
    using Outcome = RecordingTranscriptSaveOutcome;
    LiveRecordingTrackerTests() {
        metadata.id = UUID::random();
        metadata.startedAt = 1000;
        metadata.monotonicStart = 900;
        metadata.filePath = (session.paths.recordings() / "a.wav").string();
        session.files.setContents(metadata.filePath, "sound");
        session.catalog->upsert(metadata);
        announcement =
            session.notifications.observe(NotificationName::recordingTranscriptDidUpdate,
                                          [this](const NotificationObject& object) {
                                              announced.push_back(std::get<UUID>(object));
                                          });
    }
    struct Launched : SimulatedSession {
        Launched() { launch(); }
    } session;
    RecordingMetadata metadata;
    std::vector<UUID> announced;
    NotificationCenter::Observation announcement;
    CaptionCore core = LiveCaptionCoreFactory::make(session.host, session.settings);
    LiveRecordingTracker tracker{session.host, session.files, *session.catalog, session.logger};
};

TEST_F(LiveRecordingTrackerTests, FollowsARecordingToItsSave) {
    EXPECT_TRUE(tracker.saveTranscripts("nothing", "to save", std::nullopt));
    tracker.handleStarted(metadata, true, core, "option");
    EXPECT_EQ(tracker.currentStartedAt(), 900) << "the clock of the words";
    EXPECT_EQ(tracker.currentAudioPath(), metadata.filePath);
    metadata.filePath = (session.paths.recordings() / "a.m4a").string();
    session.catalog->upsert(metadata);
    EXPECT_EQ(tracker.currentAudioPath(), metadata.filePath) << "as it stands on the disk";
    EXPECT_TRUE(tracker.saveTranscripts("text", "both", std::nullopt));
    EXPECT_FALSE(tracker.hasCurrentRecording());
    EXPECT_EQ(tracker.currentRecordingMetadata(), std::nullopt);
    EXPECT_EQ(tracker.updateLastSavedTranscripts("better text", "both"), Outcome::saved);
    EXPECT_EQ(session.transcript(metadata.id), "better text");
    EXPECT_EQ(announced, (std::vector<UUID>{metadata.id, metadata.id}));
}

TEST_F(LiveRecordingTrackerTests, WhatIsDeletedWhileItIsRecordedDoesNotComeBack) {
    tracker.handleStarted(metadata, true, core, "option");
    session.catalog->deleteRecording(metadata.id);
    EXPECT_TRUE(tracker.saveTranscripts("text", "both", std::nullopt));
    EXPECT_TRUE(session.files.list(session.paths.transcripts()).empty());
    EXPECT_EQ(tracker.lastSavedID(), std::nullopt);
}

TEST_F(LiveRecordingTrackerTests, OneFailingSidecarLeavesTheOthersSaved) {
    tracker.handleStarted(metadata, true, core, "option");
    session.files.refused = ".bilingual";
    EXPECT_FALSE(tracker.saveTranscripts("text", "both", std::nullopt));
    EXPECT_EQ(session.transcript(metadata.id), "text");
    EXPECT_EQ(tracker.lastSavedID(), metadata.id);
    EXPECT_FALSE(tracker.hasCurrentRecording());
    EXPECT_EQ(tracker.updateLastSavedTranscripts("new", "both"), Outcome::failed);
    EXPECT_TRUE(announced.empty());
    const auto lines = session.logLines("recording.transcript.persist.degraded");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(lines[0]["sourceSaved"] && lines[0]["timelineSaved"]);
    EXPECT_FALSE(lines[0]["bilingualSaved"]);
    EXPECT_EQ(session.events("recording.transcript.update.").size(), 1U);
}

TEST_F(LiveRecordingTrackerTests, ALateOrDiscardedRecordingIsDeleted) {
    tracker.handleStarted(metadata, false, core, "option");
    EXPECT_FALSE(tracker.hasCurrentRecording());
    EXPECT_TRUE(session.catalog->recordings().empty());
    EXPECT_FALSE(session.files.has(metadata.filePath));

    RecordingMetadata other = metadata;
    other.id = UUID::random();
    session.files.setContents(other.filePath, "sound");
    session.catalog->upsert(other);
    tracker.handleStarted(other, true, core, "option");
    RecordingMetadata later = other;
    later.id = UUID::random();
    later.filePath += ".later.wav";
    session.files.setContents(later.filePath, "sound");
    session.catalog->upsert(later);
    tracker.handleStarted(later, true, core, "option"); // of a start that was superseded
    EXPECT_FALSE(session.catalog->recording(other.id));
    EXPECT_FALSE(session.files.has(session.catalog->journalURL(other.id)));
    tracker.discardCurrentRecordingIfAny();
    EXPECT_TRUE(session.catalog->recordings().empty());
    EXPECT_FALSE(session.files.has(later.filePath));
}

} // namespace
} // namespace tessarune
