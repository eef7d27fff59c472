#include "tests/simulation/SimulatedSession.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using simulation::SimulatedSession;

/// The resources of a session besides its texts and sound.
struct Holdings {
    std::size_t tasks;
    std::size_t waiting;
    std::size_t streams;
    std::size_t files;

    explicit Holdings(SimulatedSession& session)
        : tasks(session.host.liveTasks()),
          waiting(session.host.waitingBlocks()),
          streams(session.server.openSources().size()),
          files(session.files.list("/data").size() +
                session.files.list(session.paths.recordings()).size() +
                session.files.list(session.paths.transcripts()).size() +
                session.files.list(session.paths.logs()).size()) {}
    bool operator==(const Holdings&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Holdings& all) {
        return out << all.tasks << " tasks, " << all.waiting << " queued blocks, " << all.streams
                   << " streams, " << all.files << " files";
    }
};

TEST(LongSessionTests, OnlyTextAndSoundGrowInALongSession) {
    constexpr double sampleRate = 160; // low, because the sound lasts for hours
    SimulatedSession session(0, sampleRate);
    session.launch();
    TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::core);
    session.start();
    session.server.keepDelivering(0.5F, 0.5);
    std::vector<Holdings> hours;
    int said = 0;
    for (int hour = 0; hour < 3; ++hour) {
        for (int i = 0; i < 100; ++i) {
            const std::string words = "sentence number " + std::to_string(++said);
            session.say(false, words);
            session.host.advanceBy(15);
            session.say(true, words + ".");
            session.host.advanceBy(14.8);
        }
        session.server.goDown();
        session.host.advanceBy(60);
        session.server.comeBack();
        session.setOutputs({hour % 2 == 0 ? "b" : "a"});
        session.host.advanceBy(600);
        hours.emplace_back(session);
    }
    EXPECT_EQ(hours[1], hours[0]);
    EXPECT_EQ(hours[2], hours[0]);
    EXPECT_EQ(session.store->view().captions.committedSegments->size(),
              static_cast<std::size_t>(said));
    const double elapsed =
        session.host.now() - *session.store->recordingTracker().currentStartedAt();
    session.stop();
    session.server.keepDelivering(std::nullopt);
    session.host.advanceBy(60);
    EXPECT_EQ(*session.store->view().sessionPhase, LiveSessionPhase::idle);
    EXPECT_EQ(session.host.liveTasks(), 0U);
    EXPECT_EQ(session.host.waitingBlocks(), 0U);
    EXPECT_NEAR(session.catalog->recordings().at(0).duration, elapsed, 2);
}

} // namespace
} // namespace tessarune
