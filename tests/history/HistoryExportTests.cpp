#include "Tessarune/history/HistoryExport.h"
#include "Tessarune/history/HistorySubtitles.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"
#include "tests/history/CatalogFixture.h"
#include "tests/support/Await.h"

#include <gtest/gtest.h>

#include <random>

namespace tessarune {
namespace {

using Content = HistoryTranscriptExportContent;
using Format = HistoryExportFormat;

HistoryTranscriptExportDocument exported(Content content, std::string text, int sentences) {
    HistoryTranscriptExportDocument document{"T & T", "a\nb", content, std::move(text), {}};
    for (int i = 0; i < sentences; ++i)
        document.sentenceTimings.push_back({"", i * 3601.5, i * 3601.5 + 2, {}, ""});
    return document;
}

/// Cues in a form that a table can hold: "start-end line/line".
std::string cuesText(const std::vector<SubtitleCue>& cues) {
    std::string text;
    for (const auto& cue : cues)
        text += std::to_string(cue.startMS) + "-" + std::to_string(cue.endMS) + " " +
                Text::joined(cue.lines, "/") + "\n";
    return text;
}

TEST(HistoryTranscriptExportTests, ARowHasTheTimeOfItsSentenceAndMarkupIsEscaped) {
    const auto document = exported(Content::bilingual, "<b>a</b> & \"b\"\nx'y\nz\n\nc", 1);
    const std::string html = document.html();
    for (const char* part :
         {"<title>T &amp; T</title>", "a<br>b", "class=\"transcript with-timing\"",
          "<div class=\"time\">00:00</div><div class=\"block\"><div class=\"source\" dir=\"auto\">"
          "&lt;b&gt;a&lt;/b&gt; &amp; &quot;b&quot;</div><div class=\"translation\" dir=\"auto\">"
          "x&#39;y<br>z</div></div>",
          "<div class=\"time\"></div><div class=\"block\"><div class=\"source\" dir=\"auto\">c"})
        EXPECT_NE(html.find(part), std::string::npos) << part << html;
    const auto pdf = exported(Content::source, " a \n\n b\nc", 2).pdfDocument();
    EXPECT_EQ(pdf.rows, (std::vector<HistoryTranscriptPDFDocument::Row>{
                            {"00:00", "a", ""}, {"1:00:01", "b", ""}, {std::nullopt, "c", ""}}));
    EXPECT_EQ(HistoryTranscriptPDFDocument::decoded(pdf.encoded()), pdf);
    EXPECT_FALSE(HistoryTranscriptPDFDocument::decoded(R"({"title":"","note":"","rows":[1]})"));
    const auto untimed = exported(Content::source, "a", 0).html();
    EXPECT_NE(untimed.find("class=\"transcript no-timing\""), std::string::npos);
}

/// After a refinement, the bilingual text may still be the former one, with other sentences.
TEST(HistoryTranscriptExportTests, ABilingualRowHasTheTimeOfItsOwnSentence) {
    const struct {
        const char* rows; ///< in the order of the former text
        const char* sentences;
        std::vector<int> expected; ///< the sentence of each row; -1: none
    } cases[] = {{"a b c", "a b c", {0, 1, 2}},
                 {"a c", "a b c", {0, 2}},
                 {"a x b", "a b", {0, -1, 1}},
                 {"a x c", "a b c", {0, 1, 2}},
                 {"a x y c", "a b c", {0, -1, -1, 2}},
                 {"a a b", "a b", {0, -1, 1}},
                 {"x y", "a b c", {0, 1}},
                 {"b a c d", "a b c d", {-1, 0, 2, 3}},
                 {"x c", "a b c", {-1, 2}},
                 {"x", "", {-1}}};
    for (const auto& c : cases) {
        std::vector<std::string> rows;
        for (const auto row : Text::splitAtBlanks(c.rows))
            rows.emplace_back(row);
        std::vector<HistoryWordTimeline::Sentence> sentences;
        for (const auto sentence : Text::splitAtBlanks(c.sentences))
            sentences.push_back({std::string(sentence), 0, 0, {}, ""});
        std::vector<int> found;
        for (const auto& each : HistoryWordTimeline::sentencesOfRows(rows, sentences))
            found.push_back(each ? static_cast<int>(*each) : -1);
        EXPECT_EQ(found, c.expected) << c.rows << " / " << c.sentences;
    }
    HistoryTranscriptExportDocument former{"", "", Content::bilingual, "a\nA\n\nb\nB", {}};
    former.sentenceTimings = {{"new", 0, 1, {}, ""}, {"a", 2, 3, {}, ""}, {"b", 4, 5, {}, ""}};
    EXPECT_EQ(former.pdfDocument().rows[1].time, "00:04");
    EXPECT_EQ(cuesText(HistorySubtitles::cues(former, {}, 20)), "2000-3000 a/A\n4000-5000 b/B\n");
}

TEST(HistoryTranscriptExportTests, FileNamesComeFromTheNoteOrElseTheDate) {
    setenv("TZ", "Asia/Shanghai", 1);
    const struct {
        const char* note;
        const char* document;
        const char* audio;
    } cases[] = {{" a / b ", "a-b", "a _ b"},
                 {"会议 é_1: x--y", "会议-é_1-x-y", "会议 é_1_ x--y"},
                 {"…", "2025年10月9日-16-53-20", "…"},
                 {" \t", "2025年10月9日-16-53-20", "2025年10月9日16时53分20秒"}};
    for (const auto& c : cases) {
        HistoryItem item;
        item.note = c.note;
        item.date = "2025年10月9日";
        item.time = "16:53:20";
        item.startedAt = 1'760'000'000;
        const auto name = [&](Format format, Content content) {
            return HistoryExport::suggestedFilename({item, format, content});
        };
        EXPECT_EQ(name(Format::html, Content::source), c.document + std::string(".html"));
        EXPECT_EQ(name(Format::srt, Content::bilingual),
                  c.document + std::string("-bilingual.srt"));
        EXPECT_EQ(name(Format::m4a, Content::bilingual), c.audio + std::string(".m4a"));
    }
    HistoryItem family;
    for (int i = 0; i < 60; ++i)
        family.note += "👨‍👩‍👧‍👦क्षि";
    for (const Format format : {Format::m4a, Format::html}) {
        const std::string name =
            HistoryExport::suggestedFilename({family, format, Content::source});
        // File systems allow 255 bytes, and the name of an unfinished file is longer.
        EXPECT_TRUE(name.size() > 60 && name.size() < 230 && Text::isValidUTF8(name)) << name;
    }
}

TEST(HistorySubtitlesTests, CuesAreTimedByWordsOrElseBySentences) {
    HistoryTranscriptExportDocument document{"", "", Content::source, "", {}};
    document.text = "One two three four five six seven eight nine ten eleven twelve thirteen "
                    "fourteen fifteen.\nYes.\nNo.";
    document.sentenceTimings = {{"", 1, 9, {}, ""}, {"", 9.2, 9.5, {}, ""}, {"", 9.6, 12, {}, ""}};
    std::vector<HistoryWordTimeline::Word> words;
    for (int i = 0; i < 15; ++i)
        words.push_back({"", 1 + i * 0.5, {}});
    EXPECT_EQ(cuesText(HistorySubtitles::cues(document, words, 20)),
              "1000-5500 One two three four five/six seven eight nine\n"
              "5500-9000 ten eleven twelve thirteen/fourteen fifteen.\n"
              "9200-12000 Yes./No.\n");

    document.content = Content::bilingual;
    document.text = "The first half\n\nand the second.\n前半和后半。";
    document.sentenceTimings = {{"", 0, 1, {}, ""}, {"", 1.2, 3, {}, ""}};
    EXPECT_EQ(cuesText(HistorySubtitles::cues(document, {}, 20)),
              "0-3000 The first half and the second./前半和后半。\n");
    document.content = Content::translation;
    const auto cues = HistorySubtitles::cues(document, {}, 20);
    EXPECT_EQ(HistorySubtitles::srt(cues), "1\n00:00:00,000 --> 00:00:03,000\n前半和后半。\n\n");
    EXPECT_EQ(HistorySubtitles::webVTT({{3'661'001, 3'662'002, {"a < b & c"}}}),
              "WEBVTT\n\n01:01:01.001 --> 01:01:02.002\na &lt; b &amp; c\n\n");
}

/// Whatever the times and texts are, a player can show the cues.
TEST(HistorySubtitlesTests, CuesKeepTheirBoundsWhateverIsInTheTimeline) {
    const std::vector<std::string> words = {
        "a",     "wonderful",          "大小人口手。",
        "مرحبا", "👩‍👩‍👧", "Donaudampfschifffahrtsgesellschaftskapitänsmütze"};
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const auto below = [&](unsigned count) { return random() % count; };
        HistoryTranscriptExportDocument document{"", "", static_cast<Content>(seed % 3), "", {}};
        std::vector<HistoryWordTimeline::Word> timed;
        std::string all;
        double at = 0;
        const auto text = [&] {
            std::string made;
            for (auto left = 1 + below(40); left > 0; --left)
                made += (made.empty() ? "" : " ") + words[below(6)];
            return made;
        };
        for (unsigned row = 0; row < 8; ++row) {
            const std::string source = text();
            document.text += source + (seed % 3 == 0 ? "\n" : "\n" + text() + "\n\n");
            all += source;
            const double end = at + static_cast<double>(below(300)) / 10.0;
            if (row < 7)
                document.sentenceTimings.push_back(
                    {source, below(9) == 0 ? -1e308 : at, end, {}, ""});
            for (std::size_t i = 0; i < Text::countOfWhiteSpaceSeparated(source); ++i)
                timed.push_back({"", at + below(100) / 10.0, {}});
            at = end;
        }
        std::int64_t free = 0;
        std::string shown;
        for (const auto& cue : HistorySubtitles::cues(document, timed, at)) {
            EXPECT_GE(cue.startMS, free);
            EXPECT_GE(cue.endMS - cue.startMS, 1000);
            EXPECT_LE(cue.endMS - cue.startMS, 7000);
            EXPECT_LE(cue.lines.size(), seed % 3 == 1 ? 4U : 2U); // bilingual, or one language
            free = cue.endMS;
            for (const auto& line : cue.lines) {
                EXPECT_LE(Text::columns(line), 42U) << line;
                shown += line;
            }
        }
        if (seed % 3 == 0) {
            EXPECT_EQ(Text::countOfNonWhiteSpace(shown), Text::countOfNonWhiteSpace(all));
        }
    }
}

class HistoryExportTests : public ::testing::Test, public testing::Catalogued {
  protected:
    std::string document(const UUID& id, Format format, Content content) {
        HistoryItem item;
        item.id = id;
        try {
            return testing::await(host, exporting.document({item, format, content}));
        } catch (const HistoryExportError& error) {
            return error.what();
        }
    }
    /// The content of "/home/x.m4a" after an export of audio.
    std::string exportedAudio(const HistoryItem& item, MediaProgress progress = {},
                              std::stop_token stop = {},
                              const std::filesystem::path& to = "/home/x.m4a") {
        std::string outcome;
        spawn(Executor::main(host),
              testing::noteOutcome(
                  exporting.write({item, Format::m4a, Content::source}, to, progress, stop),
                  &outcome));
        host.runUntilIdle();
        EXPECT_NE(outcome, "running");
        return disk.contentsOf(to);
    }
    HistoryItem itemOf(const UUID& id) {
        HistoryItem item;
        item.id = id;
        item.filePath = catalog.recording(id)->filePath;
        return item;
    }
    AudioExporter audio{host, [this](const auto&, const auto& to, const auto&, auto) {
                            disk.writeAtomically(to, "encoded");
                        }};
    HistoryExport exporting{host, catalog, disk, audio,
                            [](const auto&) -> std::string { throw std::runtime_error("jam"); }};
};

TEST_F(HistoryExportTests, AnImpossibleExportSaysWhy) {
    const UUID id = add(1, "a.wav");
    EXPECT_EQ(document(id, Format::html, Content::source), "这条录音没有识别文本。");
    EXPECT_EQ(document(id, Format::pdf, Content::bilingual), "这条录音没有识别文本。");
    catalog.saveTranscript("a", id);
    EXPECT_EQ(document(id, Format::html, Content::bilingual),
              "这条录音没有已保存译文，无法导出双语 HTML。");
    EXPECT_EQ(document(id, Format::txt, Content::source), "a\n");
    EXPECT_EQ(document(id, Format::pdf, Content::source), "PDF 导出失败：jam");
    EXPECT_EQ(document(id, Format::srt, Content::source), "这条录音没有时间信息，无法导出字幕。");
    disk.setContents(catalog.wordTimelineURL(id), "{");
    EXPECT_EQ(document(id, Format::vtt, Content::source), "这条录音没有时间信息，无法导出字幕。");
    disk.onOperation = [](const std::string& operation, const std::filesystem::path& path) {
        if (operation == "read" && path.string().ends_with(".words.json"))
            throw std::system_error(std::make_error_code(std::errc::io_error));
    };
    EXPECT_EQ(document(id, Format::txt, Content::source), "a\n");
}

TEST_F(HistoryExportTests, AudioExportGivesAnM4AAndTouchesNoOtherFile) {
    disk.setContents("/home/x.m4a.part/mine", "mine"); // the user's own folder
    const UUID own = add(1, "own.m4a");
    const UUID import = add(2, "film.m4a"); // an M4A by name only
    RecordingMetadata recording = *catalog.recording(own);
    recording.audioFormat = M4A::audioFormat;
    catalog.upsert(recording);
    const HistoryItem item = itemOf(own);
    EXPECT_EQ(exportedAudio(item), std::string(64044, 'x'));
    EXPECT_EQ(exportedAudio(itemOf(import)), "encoded");
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(exportedAudio(item, {}, stop.get_token()), "encoded") << "a copy can be cancelled";
    double shown = 0;
    exportedAudio(item, [&](double fraction) { shown = fraction; });
    EXPECT_EQ(shown, 1);
    const std::uint64_t before = disk.operations;
    exportedAudio(item);
    const std::uint64_t count = disk.operations - before;
    for (std::uint64_t i = 1; i <= count; ++i) {
        disk.failAt = disk.operations + i;
        exportedAudio(item);
        EXPECT_EQ(disk.list("/home"), (std::vector<std::string>{"x.m4a", "x.m4a.part"}))
            << "operation " << i;
    }
    EXPECT_EQ(disk.contentsOf("/home/x.m4a.part/mine"), "mine");

    HistoryItem uncompressed = item; // selected before it was compressed
    uncompressed.filePath = "/data/Recordings/own.wav";
    EXPECT_EQ(exportedAudio(uncompressed), std::string(64044, 'x'));
    const char* const late = "/home/late.m4a";
    EXPECT_EQ(exportedAudio(
                  item, [&](double) { disk.setContents(late, "mine"); }, {}, late),
              "mine")
        << "a file that was created meanwhile stays";
    disk.setContents(recording.filePath, "cut off");
    EXPECT_EQ(exportedAudio(item), "encoded") << "a damaged M4A is encoded again, not copied";
    EXPECT_EQ(exportedAudio(itemOf(import), {}, {}, recording.filePath), "cut off")
        << "the program's own files are not replaced";
    EXPECT_EQ(*exporting.unfinishedFiles(), 0);
    spawn(Executor::main(host), exporting.end());
    disk.setContents("/home/old.m4a", "old");
    disk.setContents(recording.filePath, std::string(64044, 'x'));
    EXPECT_EQ(exportedAudio(item, {}, {}, "/home/old.m4a"), "old") << "the program ends";
}

} // namespace
} // namespace tessarune
