#include "Tessarune/history/RecordingRepair.h"
#include "TessaruneCore/text/Text.h"
#include "tests/history/CatalogFixture.h"

#include <gtest/gtest.h>

#include <regex>

namespace tessarune {
namespace {

using Json = nlohmann::json;
using Outcome = RecordingTranscriptSaveOutcome;

const std::string unknownID = "11111111-1111-4111-8111-111111111111";

class RecordingCatalogTests : public ::testing::Test, public testing::Catalogued {
  protected:
    bool hasSidecars(const UUID& id) const {
        return disk.has(catalog.transcriptURL(id)) || disk.has(catalog.wordTimelineURL(id)) ||
               disk.has(catalog.bilingualTranscriptURL(id)) || disk.has(catalog.entryURL(id));
    }
    static HistoryWordTimeline timeline(std::vector<HistoryWordTimeline::Sentence> sentences) {
        HistoryWordTimeline made;
        made.sentences = std::move(sentences);
        return made;
    }
};

TEST_F(RecordingCatalogTests, WritesItsFileFormatAndReadsItBack) {
    auto entry = recording(1'760'000'000.75, "a.wav", makeID());
    entry.note = "É";
    entry.sampleRate = 48000;
    ASSERT_TRUE(catalog.upsert(entry));
    EXPECT_EQ(disk.contentsOf("/data/recordings.json"), R"([
  {
    "byteCount": 64044,
    "duration": 2.0,
    "endedAt": "2025-10-09T08:53:22Z",
    "filePath": "/data/Recordings/a.wav",
    "id": "00000000-0000-4000-8000-000000000001",
    "note": "É",
    "sampleRate": 48000,
    "startedAt": "2025-10-09T08:53:20Z"
  }
]
)");
    entry.startedAt = 1'760'000'000;
    entry.endedAt = 1'760'000'002;
    EXPECT_EQ(catalog.recordings(), std::vector{entry}) << "dates have whole seconds";
}

TEST_F(RecordingCatalogTests, ListsTheNewestFirstKeepsNotesAndAnnouncesChanges) {
    std::size_t changes = 0;
    const auto observation = notifications.observe(NotificationName::recordingCatalogDidChange,
                                                   [&](const auto&) { ++changes; });
    const UUID old = add(10, "old.wav");
    const UUID b = add(30, "b.wav");
    add(20, "a.wav");
    add(30, "c.wav");
    EXPECT_EQ(order(), "b c a old ");
    EXPECT_TRUE(catalog.setNote("mine", old));
    EXPECT_TRUE(catalog.setNote("nobody's", UUID::random()));
    EXPECT_TRUE(catalog.upsert(recording(40, "old.m4a", old)));
    EXPECT_EQ(order(), "old b c a ");
    EXPECT_EQ(catalog.recording(old)->note, "mine");
    EXPECT_TRUE(catalog.setNote("", old));
    EXPECT_FALSE(index()[0].contains("note"));
    EXPECT_TRUE(catalog.deleteRecording(b));
    EXPECT_EQ(changes, 9U);
    EXPECT_FALSE(catalog.wasIndexChangedElsewhere());
    disk.setModifiedAt(paths.recordingIndex(), 5);
    EXPECT_TRUE(catalog.wasIndexChangedElsewhere());
    disk.failFrom = disk.operations + 1;
    const UUID late = makeID();
    EXPECT_FALSE(catalog.upsert(recording(5, "late.wav", late)));
    EXPECT_FALSE(catalog.markForCompression(true, late));
    EXPECT_EQ(changes, 9U) << "a change that could not be saved is not announced";
    EXPECT_EQ(log.back().rfind("Tessarune failed to update recording catalog: ", 0), 0U);
    disk.recover();
    EXPECT_EQ(order(), "old c a ");
    catalog.upsert(recording(5, "late.wav", late));
    EXPECT_EQ(catalog.recording(late)->awaitsCompression, true);
}

TEST_F(RecordingCatalogTests, KeepsUnknownKeysAndElements) {
    const std::string entry =
        R"({"id":")" + unknownID +
        R"(","startedAt":"2025-10-09T10:00:00.5+02:00","filePath":"/x/a.mp3","duration":1.5,)"
        R"("byteCount":7.0,"tags":["x",{"y":18446744073709551615}],"note":null})";
    const std::string strange[] = {R"({"id":"22222222-2222-4222-8222-222222222222","startedAt":5})",
                                   R"("text")", "null", R"([{"deep":[]}])"};
    setIndex("[" + strange[0] + "," + entry + "," + strange[1] + "," + strange[2] + "," +
             strange[3] + "]");
    const UUID id = *UUID::parse(unknownID);
    ASSERT_EQ(catalog.recordings().size(), 1U);
    EXPECT_EQ(catalog.recording(id)->startedAt, 1'759'996'800.5);
    add(1'800'000'000, "new.wav");
    auto after = index();
    ASSERT_EQ(after.size(), 6U);
    EXPECT_EQ(after[1], Json::parse(entry));
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(after[i + 2], Json::parse(strange[i]));

    auto changed = *catalog.recording(id);
    changed.byteCount = 9;
    catalog.upsert(changed);
    auto expected = Json::parse(entry);
    expected["byteCount"] = 9;
    EXPECT_EQ(index()[1], expected) << "only the changed value differs";
    // A sidecar without an entry may belong to an element without an ID, so it stays.
    disk.setContents(catalog.transcriptURL(UUID::random()), "orphan");
    const auto before = disk.usedSpace();
    catalog.cleanupOrphanTranscripts();
    EXPECT_EQ(disk.usedSpace(), before);
}

TEST_F(RecordingCatalogTests, AnUnreadableIndexIsKeptAsideAndSalvaged) {
    const UUID a = add(20, "a.wav");
    const UUID b = add(10, "b.wav");
    catalog.saveTranscript("text", a);
    const std::string whole = disk.contentsOf("/data/recordings.json");
    const struct {
        const char* name;
        std::string index;
        bool hasEntries;   ///< entry files beside the transcripts
        std::string order; ///< of the recordings listed afterwards
    } cases[] = {
        {"garbage", "\xFF{{{[", false, "new "},
        {"garbage, with entry files", "\xFF{{{[", true, "new a b "},
        {"an object, not an array", "{}", false, "new "},
        {"truncated", whole.substr(0, whole.size() - 20), false, "new a "},
        {"a missing comma", std::string(whole).erase(whole.find("},") + 1, 1), false, "new a b "},
        {"nested too deeply, with entry files", std::string(100000, '['), true, "new a b "},
        {"empty, with entry files", "", true, "new a b "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        for (const UUID& id : {a, b}) {
            disk.setContents(catalog.entryURL(id), "");
            if (c.hasEntries)
                catalog.upsert(*catalog.recording(id));
        }
        setIndex(c.index);
        EXPECT_NE(catalog.readingProblem(), "");
        catalog.healStaleRecordings();
        catalog.reconcileIndex();
        catalog.cleanupOrphanTranscripts();
        EXPECT_EQ(disk.contentsOf("/data/recordings.json"), c.index);
        EXPECT_TRUE(catalog.recordings().empty());
        EXPECT_EQ(catalog.saveRefinedTranscript("t", "", {}, a),
                  c.order.find('a') == std::string::npos ? Outcome::skippedDeleted
                                                         : Outcome::saved);
        catalog.saveTranscript("text", a);

        const UUID id = makeID();
        ASSERT_TRUE(catalog.upsert(recording(30, "new.wav", id)));
        EXPECT_EQ(order(), c.order);
        const std::filesystem::path aside = "/data/recordings.json.unreadable-20251009-200000";
        EXPECT_EQ(disk.contentsOf(aside), c.index);
        catalog.cleanupOrphanTranscripts();
        EXPECT_TRUE(disk.has(catalog.transcriptURL(a)))
            << "a transcript stays whose entry may have been lost";
        disk.remove(aside);
        disk.remove(catalog.entryURL(id));
        setIndex(whole);
    }
}

TEST_F(RecordingCatalogTests, ADiskThatDoesNotAnswerCostsNoEntry) {
    EXPECT_EQ(catalog.readingProblem(), "") << "without recordings no index is needed";
    add(10, "a.wav");
    const std::string whole = disk.contentsOf(paths.recordingIndex());
    disk.remove(paths.recordingIndex());
    EXPECT_NE(catalog.readingProblem(), "") << "an entry file without an index is a problem";
    setIndex(whole);
    disk.failAt = disk.operations + 3; // the third operation, which reads the index
    EXPECT_FALSE(catalog.upsert(recording(20, "b.wav", makeID())));
    EXPECT_TRUE(catalog.upsert(recording(20, "b.wav", makeID())));
    EXPECT_EQ(order(), "b a ");
    disk.refused = "recordings.json";
    EXPECT_EQ(catalog.saveRefinedTranscript("t", "", {}, makeID()), Outcome::failed);
    EXPECT_NE(catalog.readingProblem(), "");
    disk.refused = "/data/Recordings";
    EXPECT_NE(catalog.readingProblem(), "");
    catalog.reconcileIndex();
    disk.recover();
    EXPECT_EQ(order(), "b a ") << "a recording whose sound cannot be checked stays listed";
    disk.remove("/data/recordings.json");
    const UUID deleted = add(30, "c.wav");
    EXPECT_EQ(order(), "c b a ") << "a removed index is rebuilt from the entry files";
    for (const char* sound : {"/data/Recordings/a.wav", "/data/Recordings/c.wav"})
        disk.remove(sound);
    catalog.reconcileIndex();
    EXPECT_EQ(order(), "c b a ") << "with no sound at all, the disk may not be mounted";
    disk.remove(paths.transcripts() / (deleted.text() + ".recording.json"));
    catalog.reconcileIndex();
    EXPECT_EQ(order(), "b a ") << "a recording without its entry file was deleted";
    add(40, "d.wav");
    catalog.reconcileIndex();
    EXPECT_EQ(order(), "d ");
}

TEST_F(RecordingCatalogTests, DeletingARecordingRemovesAllItsFiles) {
    const UUID other = add(10, "20251009-110000.wav");
    const UUID id = add(20, "20251009-120000.m4a");
    for (const char* sibling : {"20251009-120000.wav", "20251009-120000.pcm"})
        disk.setContents(paths.recordings() / sibling, "x");
    for (const UUID& each : {id, other}) {
        catalog.saveTranscript("a", each);
        catalog.saveBilingualTranscript("a\nb", each);
        disk.setContents(catalog.journalURL(each), "{}");
    }
    disk.setContents("/data/Diagnostics/Live-1/manifest.json",
                     R"({"runs":[{"recordingID":")" + Text::lowercased(id.text()) + R"("}]})");
    disk.setContents("/data/Diagnostics/Live-2/manifest.json",
                     R"({"recordingID":")" + other.text() + R"("})");
    logger.important("a", {{"recordingID", id.text()}});
    logger.important("b", {{"path", std::string("/x/20251009-120000.wav")}});
    logger.important("c", {{"recordingID", other.text()}});

    disk.refused = ".bilingual.txt"; // it must not keep the other files from being removed
    ASSERT_TRUE(catalog.deleteRecording(id));
    EXPECT_EQ(disk.list(paths.recordings()), std::vector<std::string>{"20251009-110000.wav"});
    EXPECT_EQ(disk.list(paths.diagnostics()), std::vector<std::string>{"Live-2"});
    EXPECT_EQ(disk.list(paths.transcripts()).size(), 4U + 1U); // of `other`, and the refused file
    EXPECT_TRUE(events("a").empty() && events("b").empty());
    EXPECT_EQ(events("c").size(), 1U);
    catalog.cleanupOrphanTranscripts();
    EXPECT_EQ(log.back(), "Tessarune catalog cleanup: removed 1 orphan transcript sidecar(s)")
        << "one whose removal failed counts as well";
    disk.recover();
    catalog.cleanupOrphanTranscripts();
    EXPECT_EQ(disk.list(paths.transcripts()).size(), 4U);

    const UUID imported = makeID();
    auto foreign = recording(30, "", imported);
    foreign.filePath = "/music/song.m4a";
    disk.setContents("/music/song.m4a", "x");
    disk.setContents("/music/song.wav", "x");
    catalog.upsert(foreign);
    catalog.deleteRecording(imported);
    EXPECT_EQ(disk.list("/music"), std::vector<std::string>{"song.wav"});
    EXPECT_FALSE(catalog.upsert(foreign)) << "a late change by a recorder restores nothing";
    EXPECT_EQ(catalog.recordings().size(), 1U);

    auto damaged = recording(40, "", makeID()); // an entry written by another program
    damaged.filePath = paths.recordings();
    catalog.upsert(damaged);
    EXPECT_TRUE(catalog.deleteRecording(damaged.id));
    EXPECT_EQ(disk.list(paths.recordings()), std::vector<std::string>{"20251009-110000.wav"});

    ASSERT_TRUE(catalog.deleteAll());
    EXPECT_TRUE(disk.list(paths.logs()).empty() && !hasSidecars(other));
    EXPECT_FALSE(catalog.upsert(recording(10, "other.wav", other)))
        << "a running session restores nothing";
    EXPECT_EQ(disk.contentsOf("/data/recordings.json"), "[]\n");
}

TEST(RecordingDeletionTests, AnInterruptedDeletionIsCompletedByTheNextStartOrCanBeRepeated) {
    for (std::uint64_t operation = 1;; ++operation) {
        SCOPED_TRACE("operation " + std::to_string(operation));
        testing::Catalogued computer;
        auto& disk = computer.disk;
        const UUID id = computer.add(10, "a.m4a");
        computer.catalog.saveTranscript("said", id);
        for (const char* name : {"events.ndjson", "manifest.json", "transcript.txt"})
            disk.setContents(std::string("/data/Diagnostics/Live-1/") + name,
                             R"({"recordingID":")" + id.text() + R"("})");
        computer.logger.important("a", {{"recordingID", id.text()}});
        const std::uint64_t last = disk.operations + operation;
        disk.failFrom = last;
        computer.catalog.deleteRecording(id);
        const bool wasReached = disk.operations >= last;
        disk.recover();
        RecordingCatalog restarted(computer.host, disk, computer.paths, computer.logger,
                                   computer.notifications);
        RecordingRepair(disk, restarted, computer.logger).runAtLaunch();
        if (restarted.recording(id))
            restarted.deleteRecording(id);
        EXPECT_TRUE(disk.list(computer.paths.diagnostics()).empty());
        EXPECT_FALSE(disk.has(restarted.transcriptURL(id)));
        EXPECT_TRUE(computer.events("a").empty());
        if (!wasReached)
            break;
    }
}

TEST_F(RecordingCatalogTests, AnEmptySidecarIsRemovedAndAFailedSaveKeepsTheFormer) {
    const UUID id = add(10, "a.wav");
    EXPECT_TRUE(catalog.saveTranscript("", id));
    EXPECT_TRUE(disk.has(catalog.transcriptURL(id)));
    EXPECT_TRUE(catalog.saveBilingualTranscript(" \n a\nb\t", id));
    EXPECT_EQ(disk.contentsOf(catalog.bilingualTranscriptURL(id)), "a\nb");
    EXPECT_TRUE(catalog.saveWordTimeline(timeline({{"a", 0, 1, {}, "k"}}), id));
    EXPECT_TRUE(disk.has(catalog.wordTimelineURL(id)));
    EXPECT_TRUE(catalog.saveBilingualTranscript(" \n", id) &&
                catalog.saveWordTimeline(timeline({}), id));
    EXPECT_FALSE(disk.has(catalog.bilingualTranscriptURL(id)) ||
                 disk.has(catalog.wordTimelineURL(id)));

    catalog.saveTranscript("good", id);
    disk.refused = "Transcripts/";
    EXPECT_FALSE(catalog.saveTranscript("better", id));
    EXPECT_EQ(log.back().rfind(
                  "Tessarune failed to save source transcript sidecar for " + id.text() + ": ", 0),
              0U);
    EXPECT_FALSE(catalog.saveBilingualTranscript("", id)) << "a failed removal is a failed save";
    EXPECT_FALSE(catalog.saveWordTimeline(timeline({{"a", 0, 1, {}, "k"}}), id));
    disk.recover();
    EXPECT_EQ(disk.contentsOf(catalog.transcriptURL(id)), "good");
    for (const char* kind : {"source", "bilingual", "timeline"})
        EXPECT_EQ(events(std::string("recording.transcript.") + kind + ".saveFailed").size(), 1U);
}

TEST_F(RecordingCatalogTests, RefinedTranscriptsReplaceAllFormerOnesUnlessTheRecordingWasDeleted) {
    std::vector<NotificationObject> updated;
    const auto observation =
        notifications.observe(NotificationName::recordingTranscriptDidUpdate,
                              [&](const NotificationObject& id) { updated.push_back(id); });
    const UUID id = add(10, "a.wav");
    catalog.saveBilingualTranscript("kept", id);
    EXPECT_EQ(catalog.saveRefinedSourceTranscript("new", {}, id), Outcome::saved);
    EXPECT_EQ(disk.contentsOf(catalog.bilingualTranscriptURL(id)), "kept");
    EXPECT_EQ(catalog.saveRefinedTranscript("newer", "", {}, id), Outcome::saved);
    EXPECT_FALSE(disk.has(catalog.bilingualTranscriptURL(id)));
    disk.refused = ".words.json";
    EXPECT_EQ(catalog.saveRefinedTranscript("newest", "b", timeline({{"a", 0, 1, {}, "k"}}), id),
              Outcome::failed);
    disk.recover();
    EXPECT_EQ(events("recording.transcript.refined.saveFailed")[0]["path"], "/data/Transcripts");
    EXPECT_EQ(disk.contentsOf(catalog.transcriptURL(id)), "newer") << "a failure changes nothing";
    EXPECT_FALSE(disk.has(catalog.bilingualTranscriptURL(id)));
    EXPECT_EQ(updated, (std::vector<NotificationObject>{id, id}));

    catalog.deleteRecording(id);
    catalog.saveTranscript("in flight", id);
    EXPECT_EQ(catalog.saveRefinedTranscript("late", "late", {}, id), Outcome::skippedDeleted);
    EXPECT_FALSE(hasSidecars(id));
    EXPECT_EQ(log.back(), "Tessarune refinement skipped: recording " + id.text() + " was deleted");
    EXPECT_EQ(catalog.saveRefinedSourceTranscript("late", {}, id), Outcome::skippedDeleted);
    EXPECT_EQ(log.back(),
              "Tessarune source refinement skipped: recording " + id.text() + " was deleted");
}

TEST_F(RecordingCatalogTests, KilledAnywhereAllTranscriptsAreReplacedOrNone) {
    const UUID id = add(10, "a.wav");
    catalog.saveTranscript("old", id);
    catalog.saveBilingualTranscript("old", id);
    catalog.saveWordTimeline(timeline({{"a", 0, 1, {}, "k"}}), id);
    const std::string text = "Transcripts/" + id.text() + ".txt.new-";
    const std::vector<std::string> unfinished{"recordings.json.new-1000001", text + "1000001",
                                              "Recordings/20200101-000000-2.m4a.part",
                                              "Recordings/" + id.text() + ".mp3.part"};
    const std::vector<std::string> others{"Vocabulary.json.new-1000001",
                                          text + "2000001/folder",
                                          text + "77",
                                          "Transcripts/a/b",
                                          "Transcripts/a.refined",
                                          "Recordings/a.m4a.part",
                                          "Recordings/a.txt.new-1000001"};
    for (const auto& names : {unfinished, others}) {
        for (const auto& name : names)
            disk.setContents("/data/" + name, "");
    }
    const simulation::FaultyFileSystem before(disk);
    bool isKilled = true;
    for (std::uint64_t n = 1; isKilled; ++n) {
        disk.replaceContents(before);
        disk.failFrom = disk.operations + n;
        const Outcome outcome = catalog.saveRefinedTranscript("new", "", {}, id);
        isKilled = disk.operations >= disk.failFrom;
        disk.recover();
        RecordingRepair(disk, catalog, logger).runAtLaunch();
        const bool isNew = disk.contentsOf(catalog.transcriptURL(id)) == "new";
        EXPECT_TRUE(isNew || outcome == Outcome::failed);
        EXPECT_EQ(disk.list(paths.transcripts()).size(), isNew ? 6U : 8U)
            << "operation " << n; // new: entry and text; old: also translation and word times
    }
    for (const auto& name : unfinished)
        EXPECT_FALSE(disk.has("/data/" + name)) << name;
    for (const auto& name : others)
        EXPECT_TRUE(disk.has("/data/" + name)) << name;
}

TEST_F(RecordingCatalogTests, LaunchRepairsCorrectTheIndexAndRemoveOrphans) {
    const UUID stale = makeID();
    auto unfinished = recording(10, "stale.m4a", stale);
    unfinished.endedAt.reset();
    disk.setContents(unfinished.filePath, "x");
    catalog.upsert(unfinished);
    const UUID gone = add(20, "gone.wav");
    for (const UUID& id : {stale, gone})
        catalog.saveTranscript("text", id);
    disk.remove("/data/Recordings/gone.wav");
    // An entry with a path in a former data folder.
    auto moved = recording(5, "moved.wav", makeID());
    disk.setContents(moved.filePath, "x");
    moved.filePath = "/home/before/Recordings/moved.wav";
    disk.setContents(moved.filePath, "the original of a copied folder");
    catalog.upsert(moved);
    for (const char* name : {"notes.txt", "README", "11111111-1111-4111-8111-111111111111.txt"})
        disk.setContents(paths.transcripts() / name, "x");

    catalog.healStaleRecordings();
    EXPECT_EQ(catalog.recording(stale)->endedAt, 12);
    disk.capacity = 0;
    EXPECT_EQ(catalog.reconcileIndex(), 0U);
    EXPECT_EQ(log.back(), "Tessarune catalog reconcile: pruned 1 missing-audio entries");
    disk.recover();
    EXPECT_EQ(catalog.reconcileIndex(), 1U);
    EXPECT_EQ(order(), "stale moved ");
    EXPECT_EQ(catalog.recording(moved.id)->filePath, "/data/Recordings/moved.wav");
    catalog.cleanupOrphanTranscripts();
    EXPECT_EQ(log.back(), "Tessarune catalog cleanup: removed 3 orphan transcript sidecar(s)");
    EXPECT_EQ(
        disk.list(paths.transcripts()),
        (std::vector<std::string>{stale.text() + ".recording.json", stale.text() + ".txt",
                                  moved.id.text() + ".recording.json", "README", "notes.txt"}));
    const auto saved = disk.contentsOf("/data/recordings.json");
    catalog.healStaleRecordings();
    catalog.reconcileIndex();
    EXPECT_EQ(disk.contentsOf("/data/recordings.json"), saved);

    // An index that lacks two later recordings, one of which was imported.
    const UUID imported = makeID();
    const auto later = recording(30, imported.text() + ".mp3", imported);
    disk.setContents(later.filePath, "x");
    catalog.upsert(later);
    const UUID spoken = add(40, "spoken.wav");
    catalog.saveTranscript("text", spoken);
    setIndex(saved);
    const auto cut = paths.recordings() / "22222222-2222-4222-8222-222222222222.mp3";
    for (const auto& file : {cut, RecordingCatalog::unlistedImportMark(cut),
                             RecordingCatalog::unlistedImportMark(later.filePath)})
        disk.setContents(file, "x");
    disk.setContents(paths.recordings() / "33333333-3333-4333-8333-333333333333.mp3", "restored");
    catalog.cleanupOrphanTranscripts();
    EXPECT_EQ(order(), "spoken " + imported.text() + " stale moved ");
    EXPECT_TRUE(disk.has(catalog.transcriptURL(spoken)));
    EXPECT_EQ(disk.list(paths.recordings()).size(), 5U); // without the unlisted import

    // An index with a damaged entry, beside one that was kept aside earlier.
    disk.setContents("/data/recordings.json.unreadable-20250101-000000", "x");
    const std::string good = disk.contentsOf("/data/recordings.json");
    setIndex("[null]"); // entries without a readable id are counted, too
    EXPECT_EQ(catalog.readingProblem().substr(0, 19), "Damaged entries (3)");
    setIndex(std::regex_replace(good, std::regex(R"("[^"]*spoken.wav")"), "5"));
    EXPECT_EQ(catalog.readingProblem().substr(0, 19), "Damaged entries (1)");
    catalog.cleanupOrphanTranscripts();
    EXPECT_EQ(disk.contentsOf("/data/recordings.json"), good);
    EXPECT_EQ(catalog.readingProblem(), "");
    disk.remove(catalog.entryURL(spoken)); // nothing can restore this one
    setIndex(std::regex_replace(good, std::regex(R"("[^"]*spoken.wav")"), "5"));
    EXPECT_EQ(catalog.readingProblem(), "");
}

TEST_F(RecordingCatalogTests, FindsTheRunsOfARecordingNewestFirst) {
    const UUID id = makeID();
    const std::string named = R"({"recordingID":")" + id.text() + R"("})";
    const auto run = [&](const std::string& name, double time, const char* file,
                         const std::string& content) {
        disk.setContents("/data/Diagnostics/" + name + "/" + file, content);
        disk.setModifiedAt("/data/Diagnostics/" + name, time);
    };
    run("a", 5, "manifest.json", named);
    run("b", 9, "manifest.json", R"({"list":[[{"recordingID":")" + id.text() + R"("}]]})");
    run("c", 9, "recording.json", named);
    run("d", 20, "manifest.json", R"({"recording":")" + id.text() + R"("})");
    run("e", 20, "manifest.json", named.substr(1));
    run(".hidden", 20, "manifest.json", named);
    disk.setContents("/data/Diagnostics/c/manifest.json", "broken");
    disk.setContents("/data/Diagnostics/file", named);
    EXPECT_EQ(catalog.diagnosticsRunURLs({id}),
              (std::vector<std::filesystem::path>{"/data/Diagnostics/c", "/data/Diagnostics/b",
                                                  "/data/Diagnostics/a"}));
    EXPECT_EQ(catalog.diagnosticsRunURL(id), "/data/Diagnostics/c");
    EXPECT_FALSE(catalog.diagnosticsRunURL(makeID()));
    EXPECT_TRUE(catalog.diagnosticsRunURLs({}).empty());
}

} // namespace
} // namespace tessarune
