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

TEST(TranscriptSearchTests, FollowsWhatIsSavedChangedAndDeleted) {
    Searched on;
    EXPECT_EQ(on.found("sat"), "…"); // nothing has been read at the first search
    EXPECT_EQ(on.found("sat"), "01");
    EXPECT_EQ(on.found("ca"), "0");
    EXPECT_EQ(on.found("猫坐"), "0");
    EXPECT_EQ(on.found("\"sat the\""), "");
    EXPECT_EQ(on.found(""), "");
    EXPECT_EQ(std::filesystem::status(on.index()).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);

    const auto changed = on.catalog.transcriptURL(on.ids[1]);
    const auto time = std::filesystem::last_write_time(changed);
    on.write(1, "the hen hid", "");
    std::filesystem::last_write_time(changed, time); // as on a disk whose times are coarse
    on.catalog.announceTranscript(on.ids[1]);
    on.host.runUntilIdle();
    EXPECT_EQ(on.found("sat"), "0");
    EXPECT_EQ(on.found("hen"), "1");

    on.write(2, "secretword again", ""); // not announced
    on.start();
    EXPECT_EQ(on.found("again"), "…");
    EXPECT_EQ(on.found("again"), "2");

    EXPECT_TRUE(on.holds("secretword"));
    on.catalog.deleteRecording(on.ids[2]);
    on.host.runUntilIdle();
    EXPECT_EQ(on.found("secretword"), "");
    EXPECT_FALSE(on.holds("secretword"));
    EXPECT_EQ(on.found("sat"), "0");

    EXPECT_TRUE(on.holds("hid"));
    on.search.reset(); // the program ends before it can erase the words
    on.catalog.deleteRecording(on.ids[1]);
    on.start();
    spawn(Executor::main(on.host), on.search->eraseTraces());
    on.host.runUntilIdle();
    EXPECT_FALSE(on.holds("hid"));
}

TEST(TranscriptSearchTests, ADamagedIndexIsMadeAnew) {
    const auto damage = [](Searched& on, const std::function<void(std::fstream&)>& change) {
        EXPECT_EQ(on.found("sat"), "…");
        EXPECT_EQ(on.found("sat"), "01");
        on.search.reset();
        std::fstream file(on.index(), std::ios::in | std::ios::out | std::ios::binary);
        change(file);
        file.close();
        on.start();
        await(on.host, on.search->excerpts({}, {})); // lets the search run
        for (int tries = 0; tries < 3 && on.found("sat") != "01"; ++tries)
            on.host.runUntilIdle();
        EXPECT_EQ(on.found("sat"), "01");
        EXPECT_EQ(on.found("secretword"), "2");
    };
    for (const std::streamoff place : {0, 16, 96, 4096, 8192, 12288}) {
        Searched on;
        damage(on, [place](std::fstream& file) {
            file.seekp(place);
            file << std::string(3000, '\x5A');
        });
    }
    for (const std::string& content : {std::string(), std::string("no database")}) {
        Searched on;
        damage(on, [&](std::fstream&) { std::ofstream(on.index(), std::ios::trunc) << content; });
    }
    Searched on;
    damage(on, [&](std::fstream&) { SQLiteDatabase(on.index()).run("PRAGMA user_version=99"); });
}

TEST(TranscriptSearchTests, WithoutAnIndexTheTranscriptsAreSearched) {
    Searched on;
    on.open = [](const std::filesystem::path&) -> std::unique_ptr<SearchIndex> {
        throw SearchIndexFailed("the disk is full", false);
    };
    on.start();
    EXPECT_EQ(on.found("sat"), "01");
    EXPECT_EQ(on.found("坐着"), "0");
    const auto excerpts =
        await(on.host, on.search->excerpts(SearchQuery::parse("坐"), {on.ids[0], on.ids[1]}));
    EXPECT_EQ(excerpts[0], (SearchExcerpt{"猫", "坐", "着"}));
    EXPECT_EQ(excerpts[1], std::nullopt);
}

} // namespace tessarune::testing
