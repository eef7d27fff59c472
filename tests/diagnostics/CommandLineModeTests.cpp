#include "Tessarune/diagnostics/TessaruneCommandLineMode.h"
#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/text/Text.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

namespace tessarune {
namespace {

namespace fs = std::filesystem;
using Text::splitAtBlanks;

class CommandLineModeTests : public testing::Test {
  protected:
    CommandLineModeTests() { fs::create_directories(folder); }
    ~CommandLineModeTests() override { fs::remove_all(folder); }

    std::string write(const std::string& name, std::string_view content) {
        files.writeAtomically(folder / name, content);
        return folder / name;
    }

    /// The output followed by the exit status. Arguments are separated by blanks.
    std::string run(const std::string& arguments) {
        std::vector<std::string> list = {"tessarune"};
        for (const std::string_view argument : splitAtBlanks(arguments))
            list.emplace_back(argument);
        std::ostringstream out;
        const auto status = TessaruneCommandLineMode::runIfRequested(list, out, files);
        return out.str() + (status ? "exit " + std::to_string(*status) : "window");
    }

    PosixFileSystem files;
    fs::path folder = fs::path(testing::TempDir()) / UUID::random().text();
};

TEST_F(CommandLineModeTests, EachKindOfCommandLineGetsItsReply) {
    const std::string unknown = "Tessarune: unknown command-line flag ";
    const std::string refusing = ".\nRefusing to launch the GUI from a CLI-looking invocation; run "
                                 "the app bundle for the interactive app.\nexit 64";
    const std::string usage =
        "usage: Tessarune --replay <events.ndjson> [--freeze 0.6[,0.9,...]] [--self-segments] "
        "[--cumulative-partials] [--no-segment] [--no-clause]\nexit 0";
    const std::string empty = write("empty.ndjson", "no record\n");
    const std::string binary = write("binary.ndjson", "\xFF\xFE");
    const std::string missing = folder / "missing.ndjson";
    const std::string unreadable = "error: 读取失败 ";
    const std::pair<std::string, std::string> cases[] = {
        {"", "window"},
        {"file -v -", "window"},
        {"x --help --version", unknown + "--help" + refusing},
        {"--", unknown + "--" + refusing},
        {"--what --internal-tools-policy",
         "buildConfiguration=release\ndefaultEnabled=false\nisEnabled=false\n"
         "defaultShowOnLaunch=false\nshowOnLaunch=false\nexit 0"},
        {"--internal-tools-policy --replay", usage},
        {"--freeze 1 --replay", usage},
        {"--what --replay " + empty, "error: 日志为空 " + empty + "\nexit 0"},
        {"--replay " + missing, unreadable + missing + ": No such file or directory\nexit 0"},
        {"--replay " + folder.string(), unreadable + folder.string() + ": Is a directory\nexit 0"},
        {"--replay " + binary, unreadable + binary + ": not UTF-8 text\nexit 0"},
    };
    for (const auto& [arguments, expected] : cases)
        EXPECT_EQ(run(arguments), expected) << arguments;
    // A retired flag is reported before an unknown one.
    const std::string retired = run("--what --coordinator-selftest --segmenter-selftest");
    EXPECT_TRUE(retired.starts_with("Tessarune: --coordinator-selftest ")) << retired;
    EXPECT_TRUE(retired.ends_with("\nexit 64")) << retired;
}

TEST_F(CommandLineModeTests, WritesATimelineForEachFreezeTime) {
    const std::string log = write("talk.v1.ndjson", R"({"t":10,"kind":"partial","text":"So"}
{"t":10.7,"kind":"final","text":"So!","start":10,"end":10.7}
)");
    const std::string deep = folder / "deep" / "er";
    const std::string head = "== replay talk.v1.ndjson · 事件 2 条 · 跨度 0.7s ==\n";
    const std::string counts = "s · 🔒0 🏁1 · 段 1 --\n→ ";
    EXPECT_EQ(run("--replay " + log + " --freeze 0.6,1 --no-clause --no-segment --t0 9.5 --t0 1 " +
                  "--timeline-out " + deep),
              head + "\n-- freeze=0.6" + counts + deep + "/timeline-freeze0.6.json\n" +
                  "\n-- freeze=1.0" + counts + deep + "/timeline-freeze1.0.json\nexit 0");
    EXPECT_TRUE(fs::exists(deep + "/timeline-freeze1.0.json"));
    EXPECT_EQ(files.read(deep + "/timeline-freeze0.6.json"),
              files.read(fs::path(TESSARUNE_TEST_DATA) / "timeline" / "replay-of-one-word.json"));
    const std::string blocked = write("blocked", "");
    EXPECT_EQ(run("--replay " + log + " --timeline-out " + blocked),
              head + "\n-- freeze=0.6s · 🔒0 🏁1 · 段 1 --\n→ " + blocked +
                  "/timeline-freeze0.6.json\nexit 0")
        << "the replay continues if the timeline cannot be written";
}

} // namespace
} // namespace tessarune
