// Recordings are exported, changed and deleted with the terminal program, and other programs read
// the exported files back.
#include "Tessarune/platform/disk/DataFolderLock.h"
#include "tests/support/FileContents.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>

namespace tessarune::testing {
namespace {

namespace fs = std::filesystem;

/// A recording with text in several scripts, and with emoji.
class ExportTests : public ::testing::Test {
  protected:
    ExportTests() {
        fs::create_directories(data / "Recordings");
        fs::create_directories(data / "Transcripts");
        const fs::path sound = data / "Recordings/20260102-030405.wav";
        fs::copy_file(fs::path(TESSARUNE_SAMPLE_SPEECH) / "beckett.wav", sound);
        write(data / "recordings.json", Json::array({{{"id", id},
                                                      {"startedAt", "2026-01-02T03:04:05Z"},
                                                      {"endedAt", "2026-01-02T03:04:14Z"},
                                                      {"filePath", sound.string()},
                                                      {"duration", 9.0},
                                                      {"byteCount", fs::file_size(sound)},
                                                      {"note", "Notes <1/2>"}}})
                                            .dump());
        Json sentences = Json::array();
        std::string source;
        std::string bilingual;
        for (const auto& [first, second] : rows) {
            const double start = 2.0 * static_cast<double>(sentences.size());
            sentences.push_back({{"source", first},
                                 {"start", start},
                                 {"end", start + 1.9},
                                 {"timingKind", "audioWord"}});
            source += first + "\n";
            bilingual += first + "\n" + second + "\n\n";
        }
        const fs::path sidecar = data / "Transcripts" / id;
        write(sidecar.string() + ".txt", source);
        write(sidecar.string() + ".bilingual.txt", bilingual);
        write(sidecar.string() + ".words.json", Json{{"recognitionOptionID", "apple-en"},
                                                     {"timingKind", "audioWord"},
                                                     {"sentences", sentences}}
                                                    .dump());
    }

    static void write(const fs::path& path, const std::string& text) {
        std::ofstream(path) << text;
    }
    ProgramRun terminal(std::vector<std::string> arguments) const {
        return tool(fs::path(TESSARUNE_BIN) / "tessarune-terminal", std::move(arguments));
    }
    ProgramRun tool(const fs::path& program, std::vector<std::string> arguments) const {
        return run(program, arguments, folder.path(),
                   {"XDG_DATA_HOME=" + (folder / "data").string(),
                    "XDG_CONFIG_HOME=" + (folder / "config").string(), "LC_ALL=C"});
    }
    fs::path exported(const std::string& name) const {
        const ProgramRun run = terminal({"--export", "1111", "-o", name, "--quiet"});
        EXPECT_EQ(run.status, 0) << run.error;
        return folder / name.c_str();
    }

    using Json = nlohmann::json;
    TemporaryFolder folder;
    const fs::path data = folder / "data/Tessarune";
    const std::string id = "11111111-2222-4333-8444-555555555555";
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"Office staff <b>find</b> efficient flights.", "大小人口手，金木水火土，见风长门龙。"},
        {"A lovely day.", "今日は良い天気ですね。東京タワー"},
        {"In Arabic, it has letters.", "هذا نص عربي"},
        {"Thumbs 👍🏽 family 👩‍👩‍👧 flag 🇧🇷 heart ❤️ end.",
         "笑 😀 완 𠮷野家"}};
};

/// A page may look right and still contain radicals for Chinese characters, presentation forms for
/// Arabic letters, or emoji that cannot be selected.
TEST_F(ExportTests, TextSelectedInAPDFIsWhatWasWritten) {
    const ProgramRun text = tool("/usr/bin/env", {"pdftotext", "-layout", exported("a.pdf"), "-"});
    ASSERT_EQ(text.status, 0) << text.error;
    for (const auto& [source, translation] : rows) {
        EXPECT_NE(text.output.find(source), std::string::npos) << source << text.output;
        EXPECT_NE(text.output.find(translation), std::string::npos) << translation << text.output;
    }
}

TEST_F(ExportTests, AParagraphInAPDFKeepsItsColourOnTheNextPage) {
    const std::string sidecar = data / "Transcripts" / id;
    fs::remove(sidecar + ".words.json");
    fs::remove(sidecar + ".bilingual.txt");
    std::string words;
    for (int i = 0; i < 1000; ++i)
        words += "word ";
    write(sidecar + ".txt", words);
    const std::string xml =
        tool("/usr/bin/env", {"pdftohtml", "-xml", "-i", "-stdout", exported("a.pdf")}).output;
    EXPECT_NE(xml.find("<page number=\"2\""), std::string::npos);
    std::size_t fonts = 0; // each with its size and colour
    for (std::size_t at = 0; (at = xml.find("<fontspec", at)) != std::string::npos; ++at)
        ++fonts;
    EXPECT_EQ(fonts, 4U) << "for the title, the note, the text and the page number: " << xml;
}

TEST_F(ExportTests, OtherProgramsReadEveryFormat) {
    for (const char* name : {"a.srt", "a.vtt", "a.m4a"}) {
        const ProgramRun probe = tool("/usr/bin/env", {"ffprobe", "-v", "error", "-show_entries",
                                                       "stream=codec_type:format=duration", "-of",
                                                       "json", exported(name)});
        ASSERT_EQ(probe.status, 0) << name << probe.error;
        const Json found = Json::parse(probe.output);
        const bool isSound = std::string_view(name) == "a.m4a";
        EXPECT_EQ(found["streams"][0]["codec_type"], isSound ? "audio" : "subtitle");
        if (isSound)
            EXPECT_NEAR(std::stod(found["format"]["duration"].get<std::string>()), 9.9, 0.3);
    }
    const std::string html = contentsOf(exported("a.html"));
    EXPECT_NE(html.find("Office staff &lt;b&gt;find&lt;/b&gt; efficient flights."),
              std::string::npos);
    const ProgramRun printed = terminal({"--export", id, "--format", "txt", "-o", "-"});
    EXPECT_NE(printed.output.find(rows[3].first + "\n" + rows[3].second), std::string::npos);
    const ProgramRun named = terminal({"--export", id, "--content", "source", "--json"});
    const Json object = Json::parse(named.output);
    EXPECT_EQ(object["file"], "Notes-1-2.pdf");
    EXPECT_EQ(object["bytes"], fs::file_size(folder / "Notes-1-2.pdf"));
}

TEST_F(ExportTests, NothingIsReplacedOrDeletedUnasked) {
    write(folder / "mine.txt", "mine");
    EXPECT_EQ(terminal({"--export", "1", "-o", "mine.txt"}).status, 73);
    EXPECT_EQ(contentsOf(folder / "mine.txt"), "mine");
    fs::create_symlink("mine.txt", folder / "link.txt");
    EXPECT_EQ(terminal({"--export", "1", "-o", "link.txt", "--yes"}).status, 0);
    EXPECT_TRUE(fs::is_symlink(folder / "link.txt"));
    EXPECT_NE(contentsOf(folder / "mine.txt"), "mine");
    for (const char* other : {"missing", "/dev/null"}) {
        fs::remove(folder / "link.txt");
        fs::create_symlink(other, folder / "link.txt");
        EXPECT_EQ(terminal({"--export", "1", "-o", "link.txt", "--yes"}).status, 73) << other;
    }
    for (const std::string missing : {"missing/a.srt", "missing/a.m4a"}) {
        const ProgramRun failed = terminal({"--export", "1", "-o", missing});
        EXPECT_EQ(failed.status, 73);
        EXPECT_NE(failed.error.find(missing + ": No such"), std::string::npos) << failed.error;
    }
    const fs::path index = data / "recordings.json";
    EXPECT_EQ(terminal({"--export", "1", "-o", index, "--format", "txt", "--yes"}).status, 73);
    const fs::path transcript = data / "Transcripts" / (id + ".txt");
    fs::rename(transcript, folder / "kept.txt");
    fs::create_directory(transcript);
    EXPECT_EQ(terminal({"--search", "tried"}).status, 74) << "a transcript is unreadable";
    fs::remove(transcript);
    fs::rename(folder / "kept.txt", transcript);
    EXPECT_EQ(terminal({"--delete", "1"}).status, 64);
    EXPECT_EQ(terminal({"--delete", "1", "2", "--yes"}).status, 67);
    {
        const auto lock = DataFolderLock::take(TessarunePaths{data}, "another program");
        EXPECT_EQ(terminal({"--delete", "1", "--yes"}).status, 75);
        EXPECT_EQ(terminal({"--note", "1", "x"}).status, 75);
    }
    EXPECT_EQ(terminal({"--note", "1", "new note", "--quiet"}).status, 0);
    EXPECT_EQ(Json::parse(terminal({"--list", "--json"}).output)["note"], "new note");
    EXPECT_EQ(terminal({"--delete", "1", id, "--yes"}).status, 0);
    EXPECT_EQ(terminal({"--list", "--quiet"}).output, "");
    EXPECT_TRUE(fs::is_empty(data / "Transcripts"));
    EXPECT_TRUE(fs::is_empty(data / "Recordings"));
}

} // namespace
} // namespace tessarune::testing
