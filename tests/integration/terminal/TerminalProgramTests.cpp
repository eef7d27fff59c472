// The terminal program as a user runs it: real recogniser, real files, a data folder of its own.
#include "Tessarune/platform/disk/DataFolderLock.h"
#include "Tessarune/platform/pulse/PrivateSoundServer.h"
#include "tests/support/FileContents.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WordErrorRate.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <fstream>
#include <sstream>

namespace tessarune::testing {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

const fs::path samples = TESSARUNE_SAMPLE_SPEECH;

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> all;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        all.push_back(line);
    return all;
}

class TerminalProgramTests : public ::testing::Test {
  protected:
    ProgramRun terminal(std::vector<std::string> arguments) const {
        return run(fs::path(TESSARUNE_BIN) / "tessarune-terminal", arguments, folder.path(),
                   environment);
    }
    /// Checks that a recording plays on a sound server, from a time to its end.
    void expectPlayed(const std::string& id, const char* from) const {
        const PrivateSoundServer server;
        std::vector<std::string> withServer = environment;
        withServer.push_back("PULSE_SERVER=" + server.address());
        std::erase(withServer, noServer);
        const ProgramRun played =
            run(fs::path(TESSARUNE_BIN) / "tessarune-terminal",
                {"--play", id, "--from", from, "--json"}, folder.path(), withServer);
        EXPECT_EQ(played.status, 0) << played.error;
        EXPECT_NE(played.output.find("\"sentence\""), std::string::npos) << played.output;
        EXPECT_EQ(Json::parse(lines(played.output).back())["type"], "end");
    }
    std::string file(const char* sample) const { return "file:" + (samples / sample).string(); }

    static constexpr const char* noServer = "PULSE_SERVER=unix:/nowhere";
    TemporaryFolder folder;
    std::vector<std::string> environment = {"XDG_DATA_HOME=" + (folder / "data").string(),
                                            "XDG_CONFIG_HOME=" + (folder / "config").string(),
                                            "LC_ALL=C", noServer};
};

/// The committed rows that a replay printed, without their marks.
std::vector<std::string> replayedRows(const std::string& output) {
    std::vector<std::string> rows;
    for (const auto& line : lines(output)) {
        const auto mark = line.find(" \xF0\x9F\x8F\x81"); // space and chequered flag: 5 bytes
        if (mark != std::string::npos && mark + 5 == line.size())
            rows.push_back(line.substr(0, mark));
    }
    return rows;
}

TEST_F(TerminalProgramTests, ALiveRunAndTheReplayOfItsEventLogCommitTheSameSentences) {
    const ProgramRun live = terminal(
        {"--source", file("two_cities.wav"), "--fast", "--quiet", "--event-log", "talk.ndjson"});
    EXPECT_EQ(live.status, 0) << live.error;
    EXPECT_EQ(live.error, "");
    const std::string reference =
        contentsOf(fs::path(TESSARUNE_TEST_DATA) / "speech/two_cities.txt");
    EXPECT_LE(wordErrorRate(reference, live.output), 0.15) << live.output;

    const ProgramRun replay = run(fs::path(TESSARUNE_BIN) / "tessarune",
                                  {"--replay", "talk.ndjson", "--self-segments", "--no-clause"},
                                  folder.path(), environment);
    EXPECT_EQ(replayedRows(replay.output), lines(live.output)) << replay.output;
}

TEST_F(TerminalProgramTests, TheSessionIsKeptWithSoundTranscriptAndWordTimes) {
    const ProgramRun live = terminal({"--source", file("beckett.wav"), "--fast", "--json"});
    ASSERT_EQ(live.status, 0) << live.error;
    std::vector<std::string> committed;
    std::string last;
    for (const auto& line : lines(live.output)) {
        const Json object = Json::parse(line);
        last = object["type"];
        if (last == "committed")
            committed.push_back(object["text"]);
    }
    EXPECT_EQ(last, "end");
    ASSERT_FALSE(committed.empty());

    const ProgramRun list = terminal({"--list", "--json"});
    ASSERT_EQ(lines(list.output).size(), 1u) << list.output;
    const Json recording = Json::parse(list.output);
    const std::string sound = recording["file"];
    EXPECT_TRUE(sound.ends_with(".m4a")) << sound;
    EXPECT_GT(fs::file_size(sound), 16384u); // a smaller one counts as empty
    EXPECT_NEAR(recording["duration"].get<double>(), 9.9, 0.5);

    const ProgramRun show =
        terminal({"--show", recording["id"].get<std::string>().substr(0, 6), "--json"});
    ASSERT_EQ(show.status, 0) << show.error;
    const Json shown = Json::parse(show.output);
    EXPECT_EQ(lines(shown["text"]), committed);
    ASSERT_FALSE(shown["timeline"]["words"].empty());
    double before = -1;
    for (const auto& word : shown["timeline"]["words"]) {
        EXPECT_GE(word["t"].get<double>(), before);
        before = word["t"];
    }
    EXPECT_LE(before, 10.0) << "the last word's second in the recording";
}

TEST_F(TerminalProgramTests, ARunOfRealSoundReplaysToItsCaptionsAndIsPackedWithoutThem) {
    ASSERT_EQ(terminal({"--set", "diagnosticsLevel=standard"}).status, 0);
    const ProgramRun live = terminal({"--source", file("beckett.wav"), "--quiet"});
    ASSERT_EQ(live.status, 0) << live.error;
    const ProgramRun list = terminal({"--diagnostics", "list", "--json"});
    ASSERT_EQ(lines(list.output).size(), 1u) << list.output;
    const Json about = Json::parse(list.output);
    const fs::path run(about["directory"].get<std::string>());
    const ProgramRun verified = terminal({"--verify-run", run.string(), "--json"});
    EXPECT_EQ(verified.status, 0) << verified.output;
    EXPECT_EQ(Json::parse(verified.output)["segments"], lines(live.output).size());
    EXPECT_EQ(fs::status(run).permissions(), fs::perms::owner_all);
    for (const auto& entry : fs::recursive_directory_iterator(run))
        EXPECT_EQ(entry.status().permissions(),
                  entry.is_directory() ? fs::perms::owner_all
                                       : fs::perms::owner_read | fs::perms::owner_write)
            << entry.path();

    const std::string name = about["run"];
    const ProgramRun packed = terminal({"--diagnostics", "pack", name, "-o", "sent.tar.gz"});
    EXPECT_EQ(packed.status, 0) << packed.error;
    const ProgramRun listed = testing::run("/bin/tar", {"-tzf", "sent.tar.gz"}, folder.path(), {});
    EXPECT_NE(listed.output.find(name + "/perf.csv"), std::string::npos) << listed.output;
    EXPECT_EQ(listed.output.find("transcript"), std::string::npos) << listed.output;
    EXPECT_EQ(terminal({"--diagnostics", "pack", name, "-o", "sent.tar.gz"}).status, 73);
    EXPECT_EQ(terminal({"--diagnostics", "pack", name, "-o", run / "perf.csv", "--yes"}).status,
              73);

    const fs::path log = run / "events/apple-analyzer-en.ndjson";
    std::string events = contentsOf(log);
    for (std::size_t at = 0; (at = events.find("\"final\"", at)) != std::string::npos;)
        events.replace(at, 7, "\"fanal\"");
    std::ofstream(log) << events;
    EXPECT_EQ(terminal({"--diagnostics", "verify", name}).status, 65);
    EXPECT_EQ(terminal({"--diagnostics", "delete", (folder / "data").string(), "--yes"}).status, 67)
        << "a folder that is no run is not deleted";
    EXPECT_EQ(terminal({"--diagnostics", "delete", name, "--yes"}).status, 0);
    const std::string id = Json::parse(terminal({"--list", "--json"}).output)["id"];
    EXPECT_EQ(terminal({"--refine", id, "--quiet"}).error, "") << "needs no translation";
    EXPECT_FALSE(fs::exists(run));
    EXPECT_EQ(terminal({"--diagnostics", "show", name}).status, 67);
}

TEST_F(TerminalProgramTests, ARecordingThatIsTranscribedAgainOrImportedIsNoWorseThanItsCaptions) {
    const std::string reference =
        contentsOf(fs::path(TESSARUNE_TEST_DATA) / "speech/two_cities.txt");
    const auto rateOf = [&](const std::string& id) {
        const Json shown = Json::parse(terminal({"--show", id, "--json"}).output);
        return wordErrorRate(reference, shown["text"].get<std::string>());
    };
    terminal({"--set", "translationTargetLanguage=pt-BR"});
    terminal({"--source", file("two_cities.wav"), "--fast", "--quiet"});
    const std::string id = Json::parse(terminal({"--list", "--json"}).output)["id"];
    const double live = rateOf(id);
    const ProgramRun refined = terminal({"--refine", id, "--json"});
    EXPECT_EQ(refined.status, 0) << refined.error;
    EXPECT_EQ(Json::parse(lines(refined.output).back())["translation"], "saved");
    EXPECT_LE(rateOf(id), live);
    expectPlayed(id, "0:41");

    std::ofstream(folder / "note.txt") << "no sound";
    const ProgramRun imported = terminal(
        {"--import", "note.txt", (samples / "two_cities.wav").string(), "/dev/zero", "--json"});
    EXPECT_EQ(imported.status, 66) << imported.error;
    const auto listed = lines(terminal({"--list", "--json"}).output);
    ASSERT_EQ(listed.size(), 2U) << "unreadable files leave no recording";
    EXPECT_EQ(Json::parse(listed.front())["note"], "two_cities");
    EXPECT_EQ(Json::parse(listed.front())["bilingual"], true);
    // The text has about 100 words. The import may understand some of them differently, because it
    // reads the original sound file.
    constexpr double oneWord = 0.01;
    EXPECT_LE(rateOf(Json::parse(listed.front())["id"]), live + 2 * oneWord);
    const fs::path sounds = folder / "data/Tessarune/Recordings";
    EXPECT_EQ(std::distance(fs::directory_iterator(sounds), {}), 2);
}

TEST_F(TerminalProgramTests, ASecondProgramDoesNotRecordIntoTheSameFolder) {
    const auto lock =
        DataFolderLock::take(TessarunePaths{folder / "data/Tessarune"}, "another program");
    const auto captions = [&](std::vector<std::string> options) {
        options.insert(options.end(), {"--source", file("beckett.wav"), "--fast"});
        return terminal(std::move(options));
    };
    const ProgramRun refused = captions({});
    EXPECT_EQ(refused.status, 75);
    EXPECT_NE(refused.error.find("another program (process " + std::to_string(::getpid()) + ")"),
              std::string::npos)
        << refused.error;
    const ProgramRun alone = captions({"--no-record"});
    EXPECT_EQ(alone.status, 0) << alone.error;
    EXPECT_NE(alone.output, "");
    // A session with diagnostics counts as recording, even if recordings are switched off.
    ASSERT_EQ(terminal({"--set", "recordWhileCaptioning=false", "--set",
                        "sessionDiagnosticsEnabled=true"})
                  .status,
              0);
    EXPECT_EQ(captions({}).status, 75);
    EXPECT_FALSE(fs::exists(folder / "data/Tessarune/recordings.json"));
}

TEST_F(TerminalProgramTests, WithoutADataFolderThereAreStillCaptions) {
    std::ofstream(folder / "data") << "no folder";
    const ProgramRun live = terminal({"--source", file("beckett.wav"), "--fast"});
    EXPECT_EQ(live.status, 73) << live.error;
    EXPECT_NE(live.output, "");
    EXPECT_NE(live.error.find("Nothing can be recorded: "), std::string::npos) << live.error;
}

TEST_F(TerminalProgramTests, ASessionThatWasKilledIsCompletedAtTheNextStartAndReportedOnce) {
    terminal({"--set", "diagnosticsLevel=trace"});
    const ProgramRun killed =
        run("/bin/sh",
            {"-c",
             "\"$0\" \"$@\" & until grep -qs wav data/Tessarune/recordings.json; do "
             "kill -0 $! || exit 1; sleep 0.05; done; "
             "until grep -qs partial data/Tessarune/Diagnostics/*/events/apple-analyzer-en.ndjson; "
             "do kill -0 $! || exit 1; sleep 0.05; done; kill -9 $!; wait; true",
             (fs::path(TESSARUNE_BIN) / "tessarune-terminal").string(), "--source",
             file("two_cities.wav")},
            folder.path(), environment);
    ASSERT_EQ(killed.status, 0) << killed.error;
    const fs::path run = *fs::directory_iterator(folder / "data/Tessarune/Diagnostics");
    for (const char* log : {"lifecycle", "apple-analyzer-en", "boundary", "live_caption"}) {
        std::string text = contentsOf(run / "events" / (log + std::string(".ndjson")));
        for (const std::string& line : lines(text.substr(0, text.rfind('\n') + 1)))
            EXPECT_TRUE(Json::parse(line, nullptr, false).is_object()) << line;
    }
    const std::string notice = "An interrupted session was recovered";
    const std::vector<std::string> next{"--source", file("beckett.wav"), "--fast"};
    EXPECT_NE(terminal(next).error.find(notice), std::string::npos);
    EXPECT_EQ(terminal(next).error.find(notice), std::string::npos) << "reported once";
    const auto all = lines(terminal({"--list", "--json"}).output);
    ASSERT_EQ(all.size(), 3U);
    const Json first = Json::parse(all.back());
    EXPECT_TRUE(first["file"].get<std::string>().ends_with(".wav"));
    EXPECT_GT(first["duration"], 0.2);
    EXPECT_EQ(terminal({"--delete", first["id"], "--yes"}).status, 0);
    EXPECT_FALSE(fs::exists(run)) << "deleted, because it contains what was said";
}

/// The output is a full pipe that nobody reads. The session continues nevertheless, and signals
/// still end the program.
TEST_F(TerminalProgramTests, AStalledReaderBlocksNothing) {
    const auto stuck = [this](std::vector<std::string> source, const std::string& then) {
        std::vector<std::string> words = {
            "-c",
            "rm -f pipe; mkfifo pipe; exec 3<>pipe; head -c 65536 /dev/zero >&3; "
            "\"$0\" \"$@\" >&3 & " +
                then,
            (fs::path(TESSARUNE_BIN) / "tessarune-terminal").string(), "--json", "--source"};
        words.insert(words.end(), source.begin(), source.end());
        return run("/bin/sh", words, folder.path(), environment);
    };
    const std::string untilThereIs = "until grep -qs %s data/Tessarune/recordings.json; do "
                                     "kill -0 $! || exit 99; sleep 0.05; done; ";
    const auto until = [&](const char* sign) {
        std::string text = untilThereIs;
        return text.replace(text.find("%s"), 2, sign);
    };
    // A second Ctrl-C ends the program at once, whatever the first one did.
    EXPECT_EQ(stuck({file("two_cities.wav")},
                    until("wav") + "kill -INT $!; sleep 0.4; kill -INT $!; wait $!")
                  .status,
              130);
    const ProgramRun lost = stuck({file("beckett.wav"), "--fast"},
                                  until("m4a") + "kill -INT $!; sleep 0.4; kill -INT $!; wait $!");
    EXPECT_TRUE(lost.status == 74 || lost.status == 130) << lost.status;
    // Output that is read late is complete.
    const ProgramRun late = stuck({file("beckett.wav"), "--fast", "--no-record"},
                                  "program=$!; head -c 65536 <&3 >/dev/null; "
                                  "while IFS= read -r line <&3; do echo \"$line\"; "
                                  "case $line in *'\"end\"'*) wait $program; exit $?; esac; done");
    EXPECT_EQ(late.status, 0) << late.error;
    EXPECT_NE(late.output.find("\"committed\""), std::string::npos);
    for (const std::string& line : lines(late.output))
        EXPECT_TRUE(Json::accept(line)) << line;

    const std::pair<const char*, int> cannotWrite[] = {
        {"exec \"$0\" \"$@\" >/dev/full", 74},
        {"exec \"$0\" \"$@\" >&- <&-", 74},
        {"ulimit -f 1; exec \"$0\" \"$@\" --event-log long.ndjson", 73},
    };
    for (const auto& [command, status] : cannotWrite) {
        const ProgramRun failed =
            run("/bin/sh",
                {"-c", command, (fs::path(TESSARUNE_BIN) / "tessarune-terminal").string(),
                 "--source", file("beckett.wav"), "--fast", "--no-record"},
                folder.path(), environment);
        EXPECT_EQ(failed.status, status) << command << failed.error;
        EXPECT_NE(failed.error.find("writ"), std::string::npos) << failed.error;
    }
}

TEST_F(TerminalProgramTests, EachFailureHasItsStatusAndSaysWhatIsWrong) {
    std::ofstream(folder / "words.txt") << "no sound";
    const fs::path sound = folder / "a.wav";
    fs::copy_file(samples / "beckett.wav", sound);
    fs::copy_file(sound, folder / "cut.wav");
    fs::resize_file(folder / "cut.wav", 100000);
    const auto shell = [this](const char* redirection, const char* arguments) {
        const std::string program = (fs::path(TESSARUNE_BIN) / "tessarune-terminal").string();
        return run("/bin/sh", {"-c", program + " " + arguments + redirection}, folder.path(),
                   environment);
    };
    EXPECT_EQ(shell(" >/dev/full", "--settings").status, 74);
    EXPECT_EQ(shell(" | head -n 1", "--settings").error, "") << "a reader may close its pipe early";
    const ProgramRun piped = shell(" <words.txt", "--source - --fast");
    EXPECT_EQ(piped.status, 66) << piped.error;
    EXPECT_EQ(piped.error.find("model"), std::string::npos) << piped.error;
    const struct {
        std::vector<std::string> arguments;
        int status;
        const char* says;
    } cases[] = {
        {{"--source", "radio"}, 64, "radio"},
        {{"--show", ""}, 64, "--show"},
        {{"--set", "speechModel=huge"}, 64, "tiny-en"},
        {{"--source", "file:words.txt"}, 66, "words.txt"},
        {{"--source", "file:missing.wav"}, 66, "missing.wav"},
        {{"--import", "/dev/null"}, 66, "/dev/null"},
        {{"--import", "cut.wav"}, 0, "cut.wav: the end of the file is missing"},
        {{"--show", "FEED"}, 67, "FEED"},
        {{"--source", "mic"}, 69, "no sound server"},
        {{"--source", "system"}, 69, "no sound server"},
        {{"--list-sources"}, 69, "no sound server"},
        {{"--source", file("beckett.wav"), "--event-log", "no/such/folder.ndjson"},
         73,
         "no/such/folder"},
        {{"--source", "file:a.wav", "--event-log", "a.wav", "--overwrite"}, 73, "the sound"},
        {{"--model", "remove", "tiny-en"}, 78, "tiny-en"},
        {{"--languages", "remove", "ja"}, 78, "not on this computer"},
    };
    for (const auto& c : cases) {
        const ProgramRun result = terminal(c.arguments);
        EXPECT_EQ(result.status, c.status) << c.says << ": " << result.error;
        EXPECT_NE((result.error + result.output).find(c.says), std::string::npos) << result.error;
    }
    EXPECT_EQ(contentsOf(sound), contentsOf(samples / "beckett.wav")) << "unchanged";
    fs::create_directories(folder / "data/Tessarune");
    std::ofstream(folder / "data/Tessarune/recordings.json") << "[{";
    EXPECT_EQ(terminal({"--list"}).status, 74);
    EXPECT_EQ(terminal({"--show", "FEED"}).status, 74);
}

TEST_F(TerminalProgramTests, WithUnreadableSettingsNothingIsRecordedAndTheProgramSaysSo) {
    fs::create_directories(folder / "config/Tessarune");
    std::ofstream(folder / "config/Tessarune/settings.json")
        << R"({"recordWhileCaptioning": fals, "sessionDiagnosticsEnabled": true})";
    const std::vector<std::string> captions = {"--source", file("beckett.wav"), "--fast",
                                               "--quiet"};
    const ProgramRun live = terminal(captions);
    EXPECT_EQ(live.status, 0);
    EXPECT_NE(live.output, "");
    EXPECT_NE(live.error.find("--set recordWhileCaptioning="), std::string::npos) << live.error;
    EXPECT_FALSE(fs::exists(folder / "data/Tessarune/recordings.json"));
    EXPECT_EQ(live.error.find("not understood"), std::string::npos) << "English in every locale";
    EXPECT_EQ(terminal({"--settings"}).status, 74);
    EXPECT_EQ(terminal({"--set", "bgOpacity=50"}).status, 0);
    EXPECT_TRUE(fs::exists(folder / "config/Tessarune/settings.json.unreadable"));
    EXPECT_EQ(terminal(captions).error, "") << "the new settings file switches recording off";
    EXPECT_FALSE(fs::exists(folder / "data/Tessarune/recordings.json"));
}

TEST_F(TerminalProgramTests, ADamagedModelIsNamedBeforeItIsLoadedAndTheRestWorks) {
    const auto damage = [this](const char* model, const char* file) {
        const fs::path own = folder / "data/Tessarune/Models" / model;
        fs::create_directories(own.parent_path());
        fs::copy(fs::path(TESSARUNE_MODELS) / model, own, fs::copy_options::recursive);
        std::fstream bytes(own / file, std::ios::binary | std::ios::in | std::ios::out);
        bytes.seekp(100'000);
        bytes.put('\x7f');
    };
    const std::vector<std::string> captions = {"--source", file("beckett.wav"), "--fast",
                                               "--target", "pt-BR"};
    damage("translation/en-pt", "vocab.enpt.spm");
    const ProgramRun untranslated = terminal(captions);
    EXPECT_EQ(untranslated.status, 0) << untranslated.error;
    EXPECT_NE(untranslated.error.find("--languages download pt-BR"), std::string::npos);
    const std::string reference = contentsOf(fs::path(TESSARUNE_TEST_DATA) / "speech/beckett.txt");
    EXPECT_LE(wordErrorRate(reference, untranslated.output), 0.3) << untranslated.output;

    damage("speech/tiny-en", "encoder_model.ort");
    const ProgramRun refused = terminal(captions);
    EXPECT_EQ(refused.status, 78);
    EXPECT_NE(refused.error.find("tiny-en/encoder_model.ort"), std::string::npos) << refused.error;
    EXPECT_NE(refused.error.find("--model NAME"), std::string::npos)
        << "the program tells how to get the model again";
    EXPECT_EQ(lines(terminal({"--list", "--json"}).output).size(), 1u) << "only one was recorded";
    EXPECT_EQ(terminal({"--set", "speechModel=small-streaming-en"}).status, 0);
    EXPECT_NE(terminal(captions).error.find("small-streaming-en is not"), std::string::npos)
        << "a session downloads nothing";
}

/// The program is alone in a folder, so it finds neither the engine nor a model.
TEST_F(TerminalProgramTests, WithoutAModelTheProgramSaysSoAndListsModelsToDownload) {
    const fs::path alone = folder / "tessarune-terminal";
    fs::copy_file(fs::path(TESSARUNE_BIN) / "tessarune-terminal", alone);
    const ProgramRun captions =
        run(alone, {"--source", file("beckett.wav"), "--quiet"}, folder.path(), environment);
    EXPECT_EQ(captions.status, 78) << captions.error;
    EXPECT_NE(captions.error, "");
    const ProgramRun models = run(alone, {"--model", "list"}, folder.path(), environment);
    EXPECT_EQ(models.status, 0);
    EXPECT_NE(models.output.find("can be downloaded"), std::string::npos) << models.output;
}

} // namespace
} // namespace tessarune::testing
