#include "Tessarune/diagnostics/TessaruneCommandLineMode.h"
#include "Tessarune/platform/disk/PosixFileSystem.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace tessarune {
namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

class CommandLineModeTests : public testing::Test {
  protected:
    CommandLineModeTests() {
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    ~CommandLineModeTests() override { fs::remove_all(folder); }

    std::string write(const std::string& name, const std::string& content) const {
        std::ofstream(folder / name, std::ios::binary) << content;
        return (folder / name).string();
    }

    /// The output and, behind it, the exit status.
    std::string run(Arguments arguments) {
        arguments.insert(arguments.begin(), "tessarune");
        std::ostringstream out;
        const auto status = TessaruneCommandLineMode::runIfRequested(arguments, out, files);
        return out.str() + (status ? "exit " + std::to_string(*status) : "window");
    }

    PosixFileSystem files;
    fs::path folder = fs::path(testing::TempDir()) /
                      ("tessarune-cli-" +
                       std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
};

constexpr auto talk = R"({"t":10,"kind":"partial","text":"One two. x","revision":1}
{"t":10.7,"kind":"partial","text":"One two. x y","revision":2}
broken
{"t":11.5,"kind":"final","text":"One two. X y.","start":10,"end":11.5}
{"t":12.06,"kind":"partial","text":"later"}
)";

constexpr auto heading = "== replay talk.v1.ndjson · 事件 4 条 · 跨度 2.1s ==\n";
constexpr auto frozen06 = "\n-- freeze=0.6s · 🔒1 🏁1 · 段 2 --\n";
constexpr auto frozenText = "One two. 🔒\nX y. 🏁\n-- live --\nlater\n";
constexpr auto waitText = "One two. 🏁\nX y. 🏁\n-- live --\nlater\n";
constexpr auto frozenWords =
    "·· T4 时间线(相对首事件) ··\n"
    "「One two.」 firstSeen=+0.00 committed=+0.70 改写=0  词: One@+0.00 two.@+0.00\n"
    "「X y.」 firstSeen=+0.00 committed=+1.50 改写=0  词: X@+0.00 y.@+0.70\n";

TEST_F(CommandLineModeTests, RepliesToEachKindOfCall) {
    constexpr auto unknown = ".\nRefusing to launch the GUI from a CLI-looking invocation; run the "
                             "app bundle for the interactive app.\nexit 64";
    constexpr auto usage = "usage: Tessarune --replay <events.ndjson> [--freeze 0.6[,0.9,...]] "
                           "[--self-segments] [--cumulative-partials] [--no-segment] "
                           "[--no-clause]\nexit 0";
    constexpr auto policy = "buildConfiguration=release\ndefaultEnabled=false\nisEnabled=false\n"
                            "defaultShowOnLaunch=false\nshowOnLaunch=false\nexit 0";
    const std::string empty = write("empty.ndjson", "no record\n");
    struct Case {
        Arguments arguments;
        std::string expected;
    };
    const Case cases[] = {
        {{}, "window"},
        {{"file", "-v", "-"}, "window"},
        {{"x", "--help", "--version"},
         std::string("Tessarune: unknown command-line flag --help") + unknown},
        {{"--"}, std::string("Tessarune: unknown command-line flag --") + unknown},
        {{"--what", "--internal-tools-policy"}, policy},
        {{"--internal-tools-policy", "--replay"}, usage},
        {{"--replay"}, usage},
        {{"--freeze", "1", "--replay"}, usage},
        {{"--replay", empty, "--what"}, "error: 日志为空 " + empty + "\nexit 0"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(run(c.arguments), c.expected);

    const std::string missing = (folder / "missing.ndjson").string();
    const std::string binary = write("binary.ndjson", "\xFF\xFE");
    EXPECT_EQ(run({"--replay", missing}),
              "error: 读取失败 " + missing + ": No such file or directory\nexit 0");
    EXPECT_EQ(run({"--replay", folder.string()}),
              "error: 读取失败 " + folder.string() + ": Is a directory\nexit 0");
    EXPECT_EQ(run({"--replay", binary}), "error: 读取失败 " + binary + ": not UTF-8 text\nexit 0");
    // Said before the first unknown flag is.
    const std::string retired = run({"--what", "--coordinator-selftest", "--segmenter-selftest"});
    EXPECT_TRUE(retired.starts_with("Tessarune: --coordinator-selftest ")) << retired;
    EXPECT_TRUE(retired.ends_with("\nexit 64")) << retired;
}

TEST_F(CommandLineModeTests, SweepsTheFreezeValues) {
    const std::string log = write("talk.v1.ndjson", talk);
    const std::string frozen = std::string(frozen06) + frozenText;
    const auto at = [](const char* value, bool locks) {
        return "\n-- freeze=" + std::string(value) + (locks ? "s · 🔒1 🏁1" : "s · 🔒0 🏁2") +
               " · 段 2 --\n" + (locks ? frozenText : waitText);
    };
    const std::string uncut = "One two. X y. 🏁\n-- live --\nlater\n";
    struct Case {
        Arguments options;
        std::string expected;
    };
    const Case cases[] = {
        {{}, frozen},
        {{"--cumulative-partials", "--what"}, frozen},
        {{"--freeze"}, frozen},
        {{"--freeze", "abc"}, frozen},
        {{"--freeze", ""}, frozen},
        {{"--freeze", "0.3,abc,1"}, at("0.3", true) + at("1.0", false)},
        {{"--freeze", ",0.6,,0.6,"}, frozen + frozen},
        {{"--freeze", "+5e-1,.7, 0.6,0.6 ,inf,nan,0x1,1e999,++1,-1"},
         at("0.5", true) + at("0.7", false) + at("-1.0", true)},
        {{"--freeze", "9", "--freeze", "0.6"}, at("9.0", false)},
        {{"--freeze", "--words"}, frozen + frozenWords},
        {{"--self-segments"}, at("0.6", false)},
        {{"--self-segments", "--early-cut"}, frozen},
        {{"--no-segment"}, "\n-- freeze=0.6s · 🔒0 🏁1 · 段 1 --\n" + uncut},
    };
    for (const Case& c : cases) {
        Arguments arguments = {"--replay", log};
        arguments.insert(arguments.end(), c.options.begin(), c.options.end());
        EXPECT_EQ(run(arguments), heading + c.expected + "exit 0")
            << testing::PrintToString(c.options);
    }
}

TEST_F(CommandLineModeTests, ClausesAreCutUnlessItIsForbidden) {
    const std::string log =
        write("c.ndjson", R"({"t":1,"kind":"final","text":"If it rains, we stay home."})");
    const std::string head =
        "== replay c.ndjson · 事件 1 条 · 跨度 0.0s ==\n\n-- freeze=0.6s · 🔒0 ";
    EXPECT_EQ(run({"--replay", log}),
              head + "🏁2 · 段 2 --\nIf it rains, 🏁\nwe stay home. 🏁\nexit 0");
    EXPECT_EQ(run({"--replay", log, "--no-clause"}),
              head + "🏁1 · 段 1 --\nIf it rains, we stay home. 🏁\nexit 0");
}

TEST_F(CommandLineModeTests, WritesATimelineForEachValue) {
    const std::string log = write("talk.v1.ndjson", talk);
    const fs::path target = folder / "deep" / "er";
    const Arguments call = {"--replay",      log,       "--freeze",
                            "0.6,1",         "--words", "--timeline-out",
                            target.string(), "--t0",    "10"};
    const std::string first = (target / "timeline-freeze0.6.json").string();
    const std::string output = run(call);
    EXPECT_TRUE(output.starts_with(heading + std::string(frozen06) + frozenWords + "→ " + first +
                                   "\n\n-- freeze=1.0s"))
        << output;
    EXPECT_TRUE(fs::exists(target / "timeline-freeze1.0.json"));
    const std::string expected = R"({
  "engines": [
    {
      "caps": {
        "isOnline": false,
        "providesWordTimestamps": false,
        "punctuatesNatively": true,
        "selfSegments": false,
        "streamsWordByWord": false
      },
      "config": {
        "clauseLevel": true,
        "freeze": true,
        "freezeStableSeconds": 0.6,
        "partialPunctuation": false,
        "segment": true,
        "smoothPaceMS": 150,
        "softClauseLevel": true
      },
      "optionID": "talk.v1",
      "segments": [
        {
          "committedAt": 0.6999999999999993,
          "firstSeenAt": 0.0,
          "freezeKind": "ours",
          "id": "00000000-0000-4000-8000-000000000003",
          "revisionCount": 0,
          "startedAt": 0.6999999999999993,
          "text": "One two.",
          "words": [
            {
              "firstSeenAt": 0.0,
              "w": "One"
            },
            {
              "firstSeenAt": 0.0,
              "w": "two."
            }
          ]
        },
        {
          "committedAt": 1.5,
          "endedAt": 1.5,
          "firstSeenAt": 0.0,
          "freezeKind": "engine",
          "id": "00000000-0000-4000-8000-000000000005",
          "revisionCount": 0,
          "startedAt": 0.0,
          "text": "X y.",
          "words": [
            {
              "firstSeenAt": 0.0,
              "w": "X"
            },
            {
              "firstSeenAt": 0.6999999999999993,
              "w": "y."
            }
          ]
        }
      ],
      "title": "talk.v1"
    }
  ],
  "reference": {},
  "run": {
    "audioDurationSec": 2.0600000000000005,
    "audioFile": "session.wav",
    "id": "replay-talk.v1-freeze0.6",
    "importMode": "replay",
    "sampleRate": 0.0,
    "startedWall": 10.0
  },
  "schemaVersion": 1
})";
    EXPECT_EQ(files.read(first), expected);

    const std::string blocked = write("blocked", "");
    EXPECT_EQ(run({"--replay", log, "--timeline-out", blocked + "/x"}),
              heading + std::string(frozen06) + "→ " + blocked +
                  "/x/timeline-freeze0.6.json\nexit 0")
        << "a disk that refuses stops nothing";
}

} // namespace
} // namespace tessarune
