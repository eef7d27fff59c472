#include "Tessarune/history/DurationTextFormatter.h"
#include "Tessarune/history/HistoryItemLoader.h"
#include "Tessarune/history/HistoryTranscriptPayload.h"
#include "TessaruneCore/text/Localization.h"
#include "tests/history/CatalogFixture.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

class HistoryItemTests : public ::testing::Test, public testing::Catalogued {};

TEST_F(HistoryItemTests, ListsRecordingsThatHaveSoundWithTheirSizeOnDisk) {
    const struct {
        const char* name;
        std::size_t size;
        bool isListed;
    } cases[] = {{"1.wav", 44, true},     {"2.WAV", 0, true},       {"3.pcm", 10, true},
                 {"4.m4a", 16384, false}, {"5.m4a", 16385, true},   {"6.mp3", 20000, true},
                 {"7", 100, false},       {"missing.wav", 0, false}};
    std::string expected;
    for (const auto& c : cases) {
        add(100 - c.name[0], c.name);
        disk.setContents(paths.recordings() / c.name, std::string(c.size, 'x'));
        if (c.isListed)
            expected += std::string(c.name) + " " + std::to_string(c.size) + "\n";
    }
    disk.remove(paths.recordings() / "missing.wav");
    auto shortImport = recording(2, "8.opus", makeID());
    shortImport.audioFormat = "opus";
    disk.setContents(shortImport.filePath, "x");
    catalog.upsert(shortImport);
    expected += "8.opus 1\n";
    auto folder = recording(1, "", makeID());
    folder.filePath = paths.recordings();
    catalog.upsert(folder);
    std::string listed;
    for (const auto& item : HistoryItemLoader::load(catalog, disk))
        listed += std::filesystem::path(*item.filePath).filename().string() + " " +
                  std::to_string(item.byteCount) + "\n";
    EXPECT_EQ(listed, expected);
    setIndex("?");
    EXPECT_TRUE(HistoryItemLoader::load(catalog, disk).empty());
}

TEST_F(HistoryItemTests, ARowIsFormattedForDisplay) {
    const UUID id = makeID();
    auto entry = recording(1'760'000'000, "a.wav", id);
    entry.endedAt.reset();
    entry.duration = 3661.9;
    entry.note = "n";
    disk.setContents(entry.filePath, std::string(2047, 'x'));
    catalog.upsert(entry);
    catalog.saveBilingualTranscript("a", id);
    auto items = HistoryItemLoader::load(catalog, disk);
    ASSERT_EQ(items.size(), 1U);
    const HistoryItem expected{id,           id,     true, true, "2025年10月9日", "16:53:20",
                               "1:01:01",    3661.9, 1,    "n",  entry.filePath,  2047,
                               1'760'000'000};
    EXPECT_EQ(items[0], expected);
    setLocalizationTable({{"yyyy年M月d日", "d MMMM yyyy"}, {"zh_Hans_CN", "en_GB"}});
    disk.setContents(catalog.bilingualTranscriptURL(id), "");
    items = HistoryItemLoader::load(catalog, disk);
    setLocalizationTable({});
    EXPECT_EQ(items[0].date, "9 October 2025");
    EXPECT_FALSE(items[0].hasBilingualTranscript);
}

TEST(DurationTextFormatterTests, FormatsDurationsAndShowsInvalidOnesAsZero) {
    using DurationTextFormatter::compact;
    for (const double invalid : {-5.0, 1e300, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(compact(invalid), "00:00");
    EXPECT_EQ(compact(59.999), "00:59");
    EXPECT_EQ(compact(360000), "100:00:00");
}

TEST(HistoryTranscriptPayloadTests, CutsBilingualTextIntoBlocks) {
    using Blocks = std::vector<BilingualTranscriptBlock>;
    const auto blocks = &HistoryTranscriptPayload::bilingualBlocks;
    EXPECT_EQ(blocks("\n a \n b \n\n\t\n\nc\n\nd\ne\n\n f\n"),
              (Blocks{{0, "a", "b"}, {2, "c", ""}, {3, "d", "e"}, {4, "f", ""}}));
    EXPECT_EQ(blocks("a\n \nb\nc"), (Blocks{{0, "a", "b\nc"}}));
    EXPECT_EQ(blocks("a\n\n\nb"), (Blocks{{0, "a", ""}, {1, "b", ""}}));
    EXPECT_TRUE(blocks(" \n\n ").empty());
}

} // namespace
} // namespace tessarune
