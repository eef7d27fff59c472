#include "Tessarune/history/SessionJournal.h"
#include "Tessarune/history/SessionJournalContent.h"
#include "tests/history/CatalogFixture.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

CaptionSegment row(const UUID& id, std::string text, double time) {
    CaptionSegment made;
    made.id = id;
    made.sourceText = std::move(text);
    made.state = CaptionSegmentState::final;
    made.startedAt = time;
    made.endedAt = time + 1;
    return made;
}

class SessionJournalTests : public ::testing::Test, public testing::Catalogued {
  protected:
    const std::filesystem::path path = "/data/Transcripts/x.live.ndjson";
    SessionJournalContent content() {
        return SessionJournalContent::decoded(disk.contentsOf(path));
    }
};

TEST_F(SessionJournalTests, ReadsBackTheLastVersionOfEachRow) {
    SessionJournal journal(host, disk, logger, path, 100.25, "apple-en");
    const UUID a = makeID(), b = makeID();
    const std::vector<WordEvent> words{{"a\n\"é\"", 1.5, {}, 2.25, 3}, {"b", {}, {}, {}, {}}};
    auto first = row(a, "a\n\"é\" b", 101);
    journal.append(first, words);
    journal.append(row(b, "c", 102));
    first.translatedText = "译";
    first.firstSeenAt = 100.5;
    journal.append(first);
    journal.append(row(makeID(), "lost", std::numeric_limits<double>::infinity()));
    host.runUntilIdle();
    auto read = content();
    EXPECT_EQ(read.recordingStartedAt, 100.25);
    EXPECT_EQ(read.recognitionOptionID, "apple-en");
    EXPECT_EQ(read.rows, (std::vector<CaptionSegment>{first, row(b, "c", 102)}));
    EXPECT_EQ(read.wordEvents.at(a), words);
    EXPECT_EQ(read.unreadableLines, 0U);

    disk.failAt = disk.operations + 1;
    journal.append(row(makeID(), "half of it is there", 103));
    journal.append(row(makeID(), "whole", 104));
    host.runUntilIdle();
    read = content();
    EXPECT_EQ(read.rows.size(), 3U);
    EXPECT_EQ(read.rows.back().sourceText, "whole");
    EXPECT_EQ(events("session.journal.failed").size(), 1U);
    journal.discard();
    journal.append(row(makeID(), "late", 105));
    host.runUntilIdle();
    EXPECT_FALSE(disk.has(path));
}

TEST_F(SessionJournalTests, APowerCutCostsAFewSecondsOfCaptions) {
    SessionJournal journal(host, disk, logger, path, 0, "o");
    for (int i = 0; i < 60; ++i) {
        journal.append(row(makeID(), std::to_string(i), i));
        host.advanceBy(1);
    }
    using PowerLoss = simulation::FaultyFileSystem::PowerLoss;
    simulation::FaultyFileSystem suddenly(disk);
    suddenly.losePower(PowerLoss::keepsSize);
    const auto read = SessionJournalContent::decoded(suddenly.contentsOf(path));
    EXPECT_GE(read.rows.size(), 54U);
    EXPECT_EQ(read.rows[53].sourceText, "53");
    host.advanceBy(5); // silence
    simulation::FaultyFileSystem later(disk);
    later.losePower(PowerLoss::keepsNothing);
    EXPECT_EQ(SessionJournalContent::decoded(later.contentsOf(path)).rows.size(), 60U);

    journal.append(row(makeID(), "60", 60));
    spawn(Executor::main(host), journal.synchronize()); // before the computer sleeps
    host.runUntilIdle();
    disk.losePower(PowerLoss::keepsNothing);
    EXPECT_EQ(content().rows.size(), 61U);
}

TEST_F(SessionJournalTests, DamageCostsTheLinesThatItHits) {
    std::string text = *SessionJournalContent::sessionLine(5, "o") + "\n";
    for (int i = 0; i < 3; ++i)
        text += *SessionJournalContent::rowLine(row(makeID(), "text", i), {}) + "\n";
    const std::size_t line = text.find('\n', text.find('\n') + 1);
    for (std::size_t at = 0; at < text.size(); ++at) {
        std::string damaged = text;
        damaged[at] = '\xFF';
        EXPECT_GE(SessionJournalContent::decoded(damaged).rows.size(), 2U - (text[at] == '\n'))
            << at;
        const auto cut = SessionJournalContent::decoded(text.substr(0, at));
        EXPECT_EQ(cut.rows.size() > 0, at >= line) << at;
    }
}

} // namespace
} // namespace tessarune
