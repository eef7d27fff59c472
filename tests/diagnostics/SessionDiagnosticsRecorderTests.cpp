#include "Tessarune/diagnostics/DiagnosticsCatalog.h"
#include "Tessarune/diagnostics/RunVerification.h"
#include "TessaruneCore/recognition/ModelCatalog.h"
#include "tests/diagnostics/DiagnosedSession.h"
#include "tests/support/Rounds.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using testing::DiagnosedSession;
using Level = DiagnosticsLevel;
using Names = std::set<std::string>;

/// The path of a file below `folder` that contains the spoken word "elephant"; empty: none.
std::string saidIn(DiagnosedSession& session, const std::filesystem::path& folder) {
    for (const auto& name : session.files.list(folder)) {
        const auto path = folder / name;
        if (session.files.isDirectory(path)) {
            if (const auto found = saidIn(session, path); !found.empty())
                return found;
        } else if (Text::lowercased(session.files.contentsOf(path)).find("elephant") !=
                   std::string::npos) {
            return path.string();
        }
    }
    return "";
}

void expectWholeLines(DiagnosedSession& session) {
    for (const auto& path : session.runFiles()) {
        if (!path.ends_with(".ndjson"))
            continue;
        for (const auto& line : session.lines(path))
            EXPECT_TRUE(line.is_object()) << path;
    }
}

TEST(SessionDiagnosticsRecorderTests, EachLevelWritesItsFilesAndACoreRunContainsNoSpokenWord) {
    const Names core{"settings.json", "manifest.json", "events/lifecycle.ndjson"};
    Names standard = core;
    standard.merge(Names{"timeline.json",
                         "transcript.txt",
                         "bilingual-transcript.txt",
                         "live-window-stop-snapshot.json",
                         "live-window-stop-source.txt",
                         "live-window-stop-bilingual.txt",
                         "perf.csv",
                         "perf.json",
                         "perf_threads.ndjson",
                         "perf_pipeline.ndjson",
                         "events/apple-analyzer-en.ndjson",
                         "events/boundary.ndjson",
                         "events/translation.ndjson",
                         "events/correction.ndjson",
                         "events/live_caption.ndjson",
                         "events/display_units.ndjson",
                         "events/apple_reconcile.ndjson",
                         "events/apple_summary.ndjson",
                         "events/idle_memory_sentinel.ndjson",
                         "events/idle_memory_alarm.ndjson"});
    Names trace = standard;
    trace.insert("events/apple_raw.ndjson");
    for (const auto& [level, files] : std::map<Level, Names>{{Level::off, {}},
                                                             {Level::core, core},
                                                             {Level::standard, standard},
                                                             {Level::trace, trace}}) {
        SCOPED_TRACE(storageName(level));
        DiagnosedSession session(level);
        session.settings.appleAnalyzerDiagnosticsMode = level == Level::trace
                                                            ? AppleAnalyzerDiagnosticsMode::fullRaw
                                                            : AppleAnalyzerDiagnosticsMode::summary;
        session.settings.sessionDiagnosticsEnabled = true;
        session.runOne();
        ASSERT_EQ(session.phase(), LiveSessionPhase::idle) << *session.store->view().presentedError;
        if (level == Level::off) {
            EXPECT_TRUE(session.files.list(session.paths.diagnostics()).empty());
            continue;
        }
        EXPECT_EQ(session.runFiles(), files);
        const auto manifest = session.json("manifest.json");
        EXPECT_EQ(manifest["recordingID"],
                  session.store->view().outcome->value().recording->text());
        EXPECT_EQ(manifest["stop"]["trigger"], "programmatic");
        EXPECT_EQ(manifest["host"]["osVersion"], "Simulated 1");
        for (const auto& file : manifest["files"]) {
            const std::string path = file["path"];
            if (path.find("idle_memory") != std::string::npos)
                continue; // created while the manifest is written
            EXPECT_EQ(file["exists"], files.contains(path)) << path;
            if (file["exists"]) {
                EXPECT_EQ(file["bytes"], session.files.contentsOf(session.run() / path).size())
                    << path;
            }
        }
        expectWholeLines(session);
        const auto lifecycle = session.lines("events/lifecycle.ndjson");
        EXPECT_EQ(lifecycle.front()["name"], "session.start");
        EXPECT_EQ(lifecycle.back()["name"], "session.lifecycle.close");
        if (level == Level::core) {
            EXPECT_EQ(saidIn(session, session.run()), "");
            EXPECT_EQ(saidIn(session, session.paths.logs()), "");
            EXPECT_EQ(manifest["privacy"]["containsTranscriptText"], false);
            EXPECT_EQ(manifest["summary"]["committedSegmentCount"], 3);
            continue;
        }
        EXPECT_EQ(session.logLines("diagnostics.finish.start").back()["sourceChars"],
                  manifest["summary"]["transcriptCharacters"]);
        const auto settings = session.json("settings.json");
        EXPECT_EQ(settings["selectedRecognitionOptionID"], "apple-analyzer-en");
        EXPECT_EQ(settings["translationBackend"], settings["translation"]["backend"]);
        EXPECT_TRUE(settings["bgColorHex"].is_number_integer());
        EXPECT_FALSE(session.json("live-window-stop-snapshot.json").contains("smoothPaceMS"));
        const auto captions = session.lines("events/live_caption.ndjson");
        EXPECT_TRUE(std::ranges::any_of(captions, [](const auto& line) {
            return line.value("resetReason", "") == "engineFinal";
        }));
        const auto events = session.lines("events/apple-analyzer-en.ndjson");
        EXPECT_EQ(std::ranges::count_if(events,
                                        [](const auto& line) {
                                            return line["kind"] == "partial" ||
                                                   line["kind"] == "final";
                                        }),
                  5);
        const auto segments = session.json("timeline.json")["engines"][0]["segments"];
        ASSERT_EQ(segments.size(), 3u);
        EXPECT_EQ(segments[0]["text"], "Purple elephants dance.");
        const auto verified = RunVerification::verify(session.files, session.run());
        EXPECT_EQ(verified.problem, "");
        EXPECT_EQ(verified.rows, 3u);
        const auto log = session.run() / "events/apple-analyzer-en.ndjson";
        std::string changed = session.files.contentsOf(log);
        for (std::size_t at = 0; (at = changed.find("dance", at)) != std::string::npos; ++at)
            changed.replace(at, 5, "sleep");
        session.files.setContents(log, changed);
        EXPECT_NE(RunVerification::verify(session.files, session.run()).problem, "");
        const auto units = session.json("live-window-stop-snapshot.json")["units"];
        EXPECT_EQ(units.back()["sourceText"], "Nobody objects");
        EXPECT_EQ(
            session.lines("events/display_units.ndjson").back()["units"].back()["translationRole"],
            "result");
        const UUID id = *session.store->view().outcome->value().recording;
        session.catalog->deleteRecording(id);
        session.host.advanceBy(1);
        EXPECT_EQ(saidIn(session, session.paths.appSupportBase()), "");
    }
}

/// A session of hours at each level: the manifest is correct, no queue grows, and a kill at any
/// time would leave complete lines.
TEST(SessionDiagnosticsRecorderTests, AfterHoursTheManifestIsTrueAndNoQueueHasGrown) {
    constexpr int hours = testing::rounds(8);
    constexpr int minutesBetween = 6;
    constexpr double sampleSeconds = 60;
    for (const Level level : {Level::core, Level::standard, Level::verbose, Level::trace}) {
        SCOPED_TRACE(storageName(level));
        DiagnosedSession session(level);
        session.settings.appleAnalyzerDiagnosticsMode = AppleAnalyzerDiagnosticsMode::fullRaw;
        session.settings.recordWhileCaptioning = false;
        session.settings.perfSampleIntervalSeconds = sampleSeconds;
        session.start();
        session.hear(1);
        std::size_t waiting = 0;
        for (int minute = 0; minute < hours * 60; minute += minutesBetween) {
            session.say(false, "Purple elephants dance in minute " + std::to_string(minute));
            session.say(true, "Purple elephants dance in minute " + std::to_string(minute) + ".");
            session.host.advanceBy(minutesBetween * 60 - 0.2);
            if (minute == 30)
                waiting = session.host.waitingBlocks();
            for (const auto& path : session.runFiles()) { // as a kill would leave them
                const std::string text = session.files.contentsOf(session.run() / path);
                ASSERT_TRUE(path.ends_with(".json") || text.empty() || text.ends_with('\n'))
                    << path;
            }
        }
        EXPECT_LE(session.host.waitingBlocks(), waiting + 2) << "a queue has grown";
        session.stop();
        session.host.advanceBy(20);
        expectWholeLines(session);
        const auto manifest = session.json("manifest.json");
        EXPECT_NEAR(manifest["durationSeconds"].get<double>(), hours * 3600, 60);
        EXPECT_TRUE(manifest["lostRecords"].empty());
        for (const auto& file : manifest["files"]) {
            const std::string path = file["path"];
            if (file["exists"] && path.find("idle_memory") == std::string::npos) {
                EXPECT_EQ(file["bytes"], session.files.contentsOf(session.run() / path).size())
                    << path;
            }
        }
        if (level == Level::core) {
            EXPECT_LT(DiagnosticsCatalog(session.files, session.paths).directorySize(session.run()),
                      20000); // a core run stays small
        } else {
            EXPECT_EQ(RunVerification::verify(session.files, session.run()).problem, "");
        }
    }
}

/// Late timers, changed settings and a change of the recogniser: the log has everything that the
/// captions depend on.
TEST(SessionDiagnosticsRecorderTests, TheEventLogReplaysToTheSameRowsHoweverLateTheMainQueueIs) {
    for (std::uint64_t seed = 1; seed <= testing::rounds(12); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        DiagnosedSession session(Level::standard, seed);
        auto& random = session.host.random();
        const auto pick = [&](std::uint64_t below) { return random() % below; };
        session.start();
        session.hear(3);
        std::string said;
        for (int i = 0; i < 60; ++i) {
            said += (said.empty() ? "Well " : " and ") + std::to_string(pick(50)) +
                    (pick(3) == 0   ? ". Then"
                     : pick(3) == 0 ? ", so"
                                    : "");
            const bool isFinal = pick(9) == 0;
            session.engine.session().give(simulation::spoken(isFinal, said, 1, 0.1));
            if (isFinal)
                said.clear();
            if (pick(4) == 0)
                session.host.sleepComputer(0.001 * static_cast<double>(pick(900)));
            session.host.advanceBy(0.001 * static_cast<double>(pick(400)));
            if (pick(20) == 0)
                session.settings.freezeStableSeconds = pick(2) == 0 ? 0.3 : 0.9;
        }
        if (pick(3) == 0)
            session.store->selectRecognitionOption("apple-analyzer-en-gb");
        session.stop();
        session.host.advanceBy(20);
        for (const auto& run : DiagnosticsCatalog(session.files, session.paths).runs())
            EXPECT_EQ(RunVerification::verify(session.files, run.directory).problem, "");
    }
}

/// Disk failures in a diagnostics run affect neither the recording nor its transcript: both are as
/// in a session without a run.
TEST(SessionDiagnosticsRecorderTests, ADiskThatRefusesARunCostsOnlyItsRecords) {
    for (const char* refused :
         {"/data/Diagnostics", "events", "manifest.json", "timeline", ".ndjson", "Live-"}) {
        SCOPED_TRACE(refused);
        DiagnosedSession session(Level::trace);
        session.files.refused = refused;
        session.runOne();
        ASSERT_EQ(session.phase(), LiveSessionPhase::idle) << *session.store->view().presentedError;
        const auto outcome = **session.store->view().outcome;
        EXPECT_TRUE(outcome.transcriptPersisted);
        EXPECT_NE(session.transcript(*outcome.recording).find("Nobody objects"), std::string::npos);
        session.files.recover();
        session.host.advanceBy(60);
        session.runOne();
        EXPECT_TRUE(session.json("manifest.json")["lostRecords"].empty());
    }
}

/// The disk fills up during a run; there is space again before the run ends, or only later.
TEST(SessionDiagnosticsRecorderTests, AFullDiskCostsRecordsThatTheManifestCounts) {
    for (const bool roomReturns : {true, false}) {
        SCOPED_TRACE(roomReturns ? "space before the end" : "space only later");
        DiagnosedSession session(Level::trace);
        session.settings.recordWhileCaptioning = false;
        session.start();
        session.hear(3);
        session.files.capacity = session.files.usedSpace() + 500;
        session.speak();
        if (roomReturns)
            session.files.recover();
        session.stop();
        session.host.advanceBy(20);
        EXPECT_EQ(session.rows().back().sourceText, "Nobody objects");
        expectWholeLines(session);
        EXPECT_EQ(session.files.has(session.run() / "manifest.json"), roomReturns);
        const std::string problem = RunVerification::verify(session.files, session.run()).problem;
        EXPECT_EQ(problem, roomReturns ? "Events are missing: the disk was too slow or full."
                                       : "manifest.json is missing.");
    }
}

TEST(SessionDiagnosticsRecorderTests, VerifyingADamagedRunNamesTheFile) {
    DiagnosedSession session(Level::standard);
    session.runOne();
    const std::pair<const char*, const char*> damages[] = {{"manifest.json", "{\"kind\": \"live"},
                                                           {"manifest.json", "[1]"},
                                                           {"timeline.json", "{\"engines\": [7]}"},
                                                           {"timeline.json", ""}};
    for (const auto& [path, damaged] : damages) {
        const std::string whole = session.files.contentsOf(session.run() / path);
        session.files.setContents(session.run() / path, damaged);
        EXPECT_EQ(RunVerification::verify(session.files, session.run()).problem,
                  path + std::string(" is damaged."));
        session.files.remove(session.run() / path);
        EXPECT_EQ(RunVerification::verify(session.files, session.run()).problem,
                  path + std::string(" is missing."));
        session.files.setContents(session.run() / path, whole);
    }
    EXPECT_TRUE(RunVerification::verify(session.files, session.run()).matches());
}

TEST(SessionDiagnosticsRecorderTests, EvenATraceRunContainsNoSpokenWordIfTextMayNotBeKept) {
    DiagnosedSession session(Level::trace);
    TessaruneLog::setDiagnosticsLevel(Level::trace);
    session.settings.appleAnalyzerDiagnosticsMode = AppleAnalyzerDiagnosticsMode::fullRaw;
    session.settings.recordWhileCaptioning = false;
    session.mayRecord = false;
    session.runOne();
    TessaruneLog::setDiagnosticsLevel(Level::core);
    EXPECT_EQ(session.json("manifest.json")["diagnosticsLevel"], "core");
    EXPECT_FALSE(session.logLines("listen.stop.requested").empty());
    EXPECT_EQ(saidIn(session, session.paths.appSupportBase()), "");
}

/// A run may be cut off anywhere: the lines written before are complete, and the manifest names the
/// recording, so that a deletion finds the run.
TEST(SessionDiagnosticsRecorderTests, AKillLeavesCompleteLinesAndTheRecordingInTheManifest) {
    std::size_t withRecording = 0;
    for (std::uint64_t at = 30; at < 700; at += 37) {
        DiagnosedSession session(Level::trace);
        session.files.failFrom = session.files.operations + at;
        session.runOne();
        session.files.recover();
        for (const auto& path : session.runFiles()) {
            if (!path.ends_with(".ndjson"))
                continue;
            const std::string text = session.files.contentsOf(session.run() / path);
            auto lines = session.lines(path);
            if (!text.empty() && text.back() != '\n')
                lines.pop_back(); // the one write that the disk cut off
            for (const auto& line : lines)
                EXPECT_TRUE(line.is_object()) << path << " killed after operation " << at;
        }
        if (session.json("manifest.json").contains("recordingID"))
            ++withRecording;
    }
    EXPECT_GT(withRecording, 10u) << "too few manifests name the recording";
}

TEST(SessionDiagnosticsRecorderTests, ASessionThatDiscardsItsRecordingKeepsItsRun) {
    for (const bool listens : {true, false}) {
        SCOPED_TRACE(listens ? "stopped before any sound" : "stopped during the start");
        DiagnosedSession session(listens ? Level::core : Level::standard);
        std::string faults;
        TessaruneLog::setSink([&](TessaruneLogger::Level level, auto, const std::string& text) {
            faults += level == TessaruneLogger::Level::fault ? text : "";
        });
        session.server.openDelay = listens ? 0 : 5;
        session.start();
        session.host.advanceBy(0.5);
        ASSERT_TRUE(session.json("manifest.json").contains("recordingID"));
        session.stop();
        session.host.advanceBy(60);
        TessaruneLog::setSink({});
        EXPECT_EQ(faults, "");
        EXPECT_TRUE(session.catalog->recordings().empty());
        EXPECT_EQ(session.files.list(session.paths.diagnostics()).size(), 1u);
        const auto manifest = session.json("manifest.json");
        EXPECT_FALSE(manifest.contains("recordingID"));
        EXPECT_EQ(manifest["summary"]["transcriptCharacters"], 0);
    }
}

TEST(SessionDiagnosticsRecorderTests, EachRunOfASessionNamesItsRecordingAndSampleRate) {
    DiagnosedSession session(Level::standard);
    session.start();
    session.speak();
    session.store->selectRecognitionOption(ModelCatalog::recognitionOptions().at(1).id);
    session.host.advanceBy(2);
    const std::string id = session.store->recordingTracker().currentID()->text();
    EXPECT_EQ(session.json("manifest.json")["recordingID"], id)
        << "the manifest names the recording before the run ends";
    session.files.refused = "recordings.json";
    session.stop();
    session.host.advanceBy(20);
    session.files.recover();
    EXPECT_EQ(session.json("manifest.json")["recordingID"], id);
    EXPECT_EQ(session.json("manifest.json")["performance"]["sampleRate"], session.sampleRate);
    EXPECT_EQ(RunVerification::verify(session.files, session.run()).problem, "");
    session.runOne();
    EXPECT_NE(session.json("manifest.json")["recordingID"], id);
    EXPECT_EQ(session.json("manifest.json")["performance"]["sampleRate"], session.sampleRate);
    EXPECT_EQ(session.files.list(session.paths.diagnostics()).size(), 3u);
}

TEST(SessionDiagnosticsRecorderTests, ARecordingThatIsDeletedWhileItsRunIsWrittenLeavesNoWords) {
    DiagnosedSession session(Level::standard);
    session.files.onOperation = [&](const std::string& operation, const auto& path) {
        if (operation != "write" || path.filename() != "timeline.json")
            return;
        session.files.refused = "/Diagnostics"; // the run cannot be removed now
        session.catalog->deleteRecording(session.catalog->recordings().front().id);
        session.files.refused = "";
    };
    session.runOne();
    EXPECT_EQ(saidIn(session, session.paths.diagnostics()), "");
}

TEST(SessionDiagnosticsRecorderTests, AStallOfTheMainQueueIsSampledWhileItLasts) {
    DiagnosedSession session(Level::standard);
    session.settings.perfSampleIntervalSeconds = 0.1;
    const double startedAt = session.host.now();
    session.start();
    session.hear(2.2);
    const double stallsAt = session.host.now() - startedAt;
    session.host.stallMainQueue(3);
    session.host.advanceBy(6);
    session.stop();
    session.host.advanceBy(20);
    std::istringstream rows(session.files.contentsOf(session.run() / "perf.csv"));
    std::string row;
    std::getline(rows, row);
    double before = 0;
    double highestLag = 0;
    int duringStall = 0;
    while (std::getline(rows, row)) {
        EXPECT_GE(std::stod(row), before + 0.45) << row; // the shortest interval is 0.5 s
        before = std::stod(row);
        duringStall += before > stallsAt && before < stallsAt + 3 ? 1 : 0;
        highestLag = std::max(highestLag, std::stod(row.substr(row.rfind(',') + 1)));
    }
    EXPECT_GT(before, 7);
    EXPECT_GE(duringStall, 5);
    EXPECT_GT(highestLag, 2700);
}

TEST(DiagnosticsNDJSONWriterTests, ARecordThatIsWrittenInPartIsRemoved) {
    simulation::FaultyFileSystem files;
    SimulatedHost host;
    files.createDirectories("/run");
    DiagnosticsNDJSONWriter log(host, files, "/run/log", "test");
    log.appendText("first\n");
    host.runUntilIdle();
    files.failAt = files.operations + 1;
    log.appendText("a long record of which the disk takes half\n");
    log.appendText("short\n");
    log.close();
    EXPECT_EQ(files.contentsOf("/run/log"), "first\nshort\n");
    EXPECT_EQ(log.lostRecords(), 1u);
}

TEST(SessionDiagnosticsRecorderTests, PruningKeepsTheNewestRunsAndRunsOfTheSameSecondDifferInName) {
    simulation::FaultyFileSystem files;
    const TessarunePaths paths{"/data"};
    const auto make = [&](int number, std::size_t bytes) {
        const auto run = paths.diagnostics() / ("Live-" + std::to_string(100 + number));
        files.setContents(run / "events" / "lifecycle.ndjson", std::string(bytes, 'x'));
        files.setModifiedAt(run, number);
    };
    for (int i = 0; i < 35; ++i)
        make(i, 10);
    DiagnosticsCatalog catalog(files, paths);
    EXPECT_EQ(catalog.pruneRuns({}).prunedRuns, 5u);
    EXPECT_EQ(catalog.runs().back().id(), "Live-105");
    EXPECT_EQ(catalog.pruneRuns({30, 25, 3}).freedBytes, 270);
    EXPECT_EQ(catalog.runs().size(), 3u);
    EXPECT_EQ(catalog.pruneRuns({1, 0, 3}).prunedRuns, 0u);
    EXPECT_FALSE(catalog.remove({paths.appSupportBase(), 0}));
    EXPECT_FALSE(catalog.remove({paths.diagnostics(), 0}));

    DiagnosedSession session(Level::core);
    session.settings.recordWhileCaptioning = false;
    for (int i = 0; i < 2; ++i) {
        session.start();
        session.hear(1);
        session.stop();
        session.host.advanceBy(1);
        session.host.shiftWallClock(-2);
    }
    const auto names = session.files.list(session.paths.diagnostics());
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(names[1], names[0] + "-2");
    EXPECT_FALSE(session.json("manifest.json").contains("recordingID"));
}

} // namespace
} // namespace tessarune
