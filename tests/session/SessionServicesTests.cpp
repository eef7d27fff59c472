#include "Tessarune/session/LiveCaptionCoreFactory.h"
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

TEST_F(LiveAudioInactivityAutoStopTests, FiresOnceAtTheFirstLookAfterTheLimit) {
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
    watch.stop();
    watch.noteActivity();
    host.advanceTo(2000);
    EXPECT_EQ(firedAt.size(), 2U);
    for (const std::optional<double> never : {std::optional<double>(), std::optional<double>(0)}) {
        start(never);
        EXPECT_FALSE(watch.isRunning());
    }
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
