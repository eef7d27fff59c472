#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/sqlite/SQLiteSearchIndex.h"
#include "Tessarune/search/TranscriptSearch.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/support/Await.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

namespace tessarune::testing {

namespace {

/// Recordings in a separate folder, and a search over them that can be restarted.
struct Searched {
    Searched() {
        for (int i = 0; i < 3; ++i) {
            ids.push_back(makeID());
            RecordingMetadata recording;
            recording.id = ids.back();
            recording.startedAt = 1'700'000'000 + i;
            recording.filePath = folder / "sound.wav";
            catalog.upsert(recording);
        }
        write(0, "the cat sat", "the cat sat\n猫坐着\n\nand ran\n然后跑了");
        write(1, "the dog sat", "");
        write(2, "secretword", "");
        start();
    }

    void start() {
        search.reset(); // a second search would count as a second program
        search.emplace(host, files, catalog, logger, notifications, open);
    }
    void write(int number, const std::string& source, const std::string& bilingual) {
        catalog.saveTranscript(source, ids[static_cast<std::size_t>(number)]);
        catalog.saveBilingualTranscript(bilingual, ids[static_cast<std::size_t>(number)]);
    }
    /// The numbers of the matching recordings, and "…" if some were not read yet.
    std::string found(const std::string& query) {
        const auto result = await(host, search->find(SearchQuery::parse(query)));
        std::string numbers;
        for (std::size_t i = 0; i < ids.size(); ++i) {
            if (std::ranges::find(result.recordings, ids[i]) != result.recordings.end())
                numbers += std::to_string(i);
        }
        return result.isComplete ? numbers : numbers + "…";
    }
    std::filesystem::path index() const { return SearchIndexKeeper::indexPath(paths); }
    /// Whether a file of the index contains the word.
    bool holds(const std::string& word) const {
        return std::ranges::any_of(std::vector{"", "-wal"}, [&](const char* suffix) {
            const auto path = std::filesystem::path(index().string() + suffix);
            return std::filesystem::exists(path) &&
                   contentsOf(path).find(word) != std::string::npos;
        });
    }

    UUIDSource makeID = countingUUIDSource();
    TemporaryFolder folder;
    SimulatedHost host{1000};
    PosixFileSystem files;
    TessarunePaths paths{folder.path()};
    TessaruneFileLogger logger{host, files, paths};
    NotificationCenter notifications;
    RecordingCatalog catalog{host, files, paths, logger, notifications};
    OpenSearchIndex open = openSQLiteSearchIndex;
    std::vector<UUID> ids;
    std::optional<TranscriptSearch> search;
};

} // namespace

TEST(TranscriptSearchTests, FollowsSavedChangedAndDeletedTranscripts) {
    Searched setup;
    EXPECT_EQ(setup.found("sat"), "…"); // nothing has been read at the first search
    EXPECT_EQ(setup.found("sat"), "01");
    EXPECT_EQ(setup.found("ca"), "0");
    EXPECT_EQ(setup.found("猫坐"), "0");
    EXPECT_EQ(setup.found("\"sat the\""), "");
    EXPECT_EQ(setup.found(""), "");
    EXPECT_EQ(std::filesystem::status(setup.index()).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);

    const auto changed = setup.catalog.transcriptURL(setup.ids[1]);
    const auto time = std::filesystem::last_write_time(changed);
    setup.write(1, "the hen hid", "");
    std::filesystem::last_write_time(changed, time); // as on a disk whose times are coarse
    setup.catalog.announceTranscript(setup.ids[1]);
    setup.host.runUntilIdle();
    EXPECT_EQ(setup.found("sat"), "0");
    EXPECT_EQ(setup.found("hen"), "1");

    setup.write(2, "secretword again", ""); // not announced
    setup.start();
    EXPECT_EQ(setup.found("again"), "…");
    EXPECT_EQ(setup.found("again"), "2");

    EXPECT_TRUE(setup.holds("secretword"));
    setup.catalog.deleteRecording(setup.ids[2]);
    setup.host.runUntilIdle();
    EXPECT_EQ(setup.found("secretword"), "");
    EXPECT_FALSE(setup.holds("secretword"));
    EXPECT_EQ(setup.found("sat"), "0");

    EXPECT_TRUE(setup.holds("hid"));
    setup.search.reset(); // the program ends before it can erase the words
    setup.catalog.deleteRecording(setup.ids[1]);
    setup.start();
    spawn(Executor::main(setup.host), setup.search->eraseTraces());
    setup.host.runUntilIdle();
    EXPECT_FALSE(setup.holds("hid"));
}

TEST(TranscriptSearchTests, ADamagedIndexIsRebuilt) {
    const auto damage = [](Searched& setup, const std::function<void(std::fstream&)>& change) {
        EXPECT_EQ(setup.found("sat"), "…");
        EXPECT_EQ(setup.found("sat"), "01");
        setup.search.reset();
        std::fstream file(setup.index(), std::ios::in | std::ios::out | std::ios::binary);
        change(file);
        file.close();
        setup.start();
        await(setup.host, setup.search->excerpts({}, {})); // lets pending work run
        for (int tries = 0; tries < 3 && setup.found("sat") != "01"; ++tries)
            setup.host.runUntilIdle();
        EXPECT_EQ(setup.found("sat"), "01");
        EXPECT_EQ(setup.found("secretword"), "2");
    };
    for (const std::streamoff place : {0, 16, 96, 4096, 8192, 12288}) {
        Searched setup;
        damage(setup, [place](std::fstream& file) {
            file.seekp(place);
            file << std::string(3000, '\x5A');
        });
    }
    for (const std::string& content : {std::string(), std::string("no database")}) {
        Searched setup;
        damage(setup,
               [&](std::fstream&) { std::ofstream(setup.index(), std::ios::trunc) << content; });
    }
    Searched setup;
    damage(setup,
           [&](std::fstream&) { SQLiteDatabase(setup.index()).run("PRAGMA user_version=99"); });
}

TEST(TranscriptSearchTests, WithoutAnIndexTheTranscriptsAreSearched) {
    Searched setup;
    setup.open = [](const std::filesystem::path&) -> std::unique_ptr<SearchIndex> {
        throw SearchIndexFailed("the disk is full", false);
    };
    setup.start();
    EXPECT_EQ(setup.found("sat"), "01");
    EXPECT_EQ(setup.found("坐着"), "0");
    const auto excerpts = await(
        setup.host, setup.search->excerpts(SearchQuery::parse("坐"), {setup.ids[0], setup.ids[1]}));
    EXPECT_EQ(excerpts[0], (SearchExcerpt{"猫", "坐", "着"}));
    EXPECT_EQ(excerpts[1], std::nullopt);
}

} // namespace tessarune::testing
