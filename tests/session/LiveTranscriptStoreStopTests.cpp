#include "Tessarune/session/LiveCaptionCoreFactory.h"
#include "Tessarune/session/TessaruneListeningLifecycleHandler.h"
#include "tests/simulation/SimulatedSession.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using simulation::SimulatedSession;
using Phase = LiveSessionPhase;
using Strings = std::vector<std::string>;

class LiveTranscriptStoreStopTests : public ::testing::Test {
  protected:
    void begin() {
        session.launch();
        session.start();
        session.hear(2);
    }
    void endAndWait(double seconds = 20) {
        session.stop();
        session.host.advanceBy(seconds);
    }
    RecordingMetadata recording() { return session.catalog->recordings().at(0); }
    /// The lifecycle entries of the stop from an index on, as ". name" (instant), "+ name" (start),
    /// "- name" (finish) or "! name" (failure).
    Strings lifecycle(std::size_t from) {
        Strings all;
        for (std::size_t i = from; i < session.diagnostics->entries.size(); ++i) {
            const auto& entry = session.diagnostics->entries[i];
            all.push_back(std::string(1, ".+-!"[static_cast<int>(entry.phase)]) + " " +
                          entry.name.substr(sizeof("listen.stop") - 1));
            EXPECT_EQ(entry.elapsedSeconds.has_value(),
                      all.back()[0] == '-' || all.back()[0] == '!');
        }
        return all;
    }
    SimulatedSession session;
};

TEST_F(LiveTranscriptStoreStopTests, AStopDrainsSealsCompressesAndSavesInOrder) {
    session.diagnostics->onCloseLifecycle = [&] { session.translator->calls.push_back("close"); };
    session.diagnostics->onFinish = [&](const SessionDiagnostics::Finish& finish) {
        EXPECT_EQ(finish.snapshot.sourceText, "One is said.\nTwo follows late.");
        EXPECT_TRUE(finish.recording && finish.recording->filePath.ends_with(".m4a"));
        EXPECT_GT(finish.perfStats.at("fedAudioSeconds"), 0) << "the figures outlive the engine";
        session.translator->calls.push_back("finish");
    };
    session.diagnostics->onStopSnapshot = [&](const std::string& reason, bool done) {
        session.translator->calls.push_back(reason + (done ? " done" : ""));
    };
    std::vector<UUID> announced;
    const auto observation = session.notifications.observe(
        NotificationName::recordingTranscriptDidUpdate,
        [&](const NotificationObject& object) { announced.push_back(std::get<UUID>(object)); });
    begin();
    session.say(true, "One is said.");
    session.say(false, "Two foll");
    const UUID id = recording().id;
    EXPECT_TRUE(session.files.has(session.catalog->journalURL(id)));
    session.engine.session().give(simulation::spoken(false, "lost as a guess", 1.2, 0.1));
    const std::size_t before = session.diagnostics->entries.size();
    session.refreshes.clear();
    session.translator->calls.clear();
    session.store->stopListening(LiveSessionControlTrigger::toolbarPill());
    EXPECT_EQ(session.status(), "正在收尾保存…");
    EXPECT_EQ(session.store->view().audioLevel, 0.08) << "the level meter is at rest";
    EXPECT_FALSE(*session.store->view().isListening);
    // Results during the drain: a final counts, a guess does not.
    session.store->applyRecognition(ASREvent::partial("a guess", 9, session.host.now()));
    session.store->applyRecognition(
        ASREvent::final("Two follows late.", 1, 2, EndpointReason::engineFinal));
    session.translator->preparesLanguages();
    session.host.advanceBy(20);

    EXPECT_FALSE(session.store->view().translation.translationPreparationDisplayState->preparing);
    EXPECT_EQ(lifecycle(before),
              (Strings{". .requested", "+ .engineDrain", "- .engineDrain", "+ .finalize", "+ .seal",
                       "- .seal", "+ .translationDrain", "- .translationDrain", "+ .audioCompress",
                       "- .audioCompress", "+ .diagnostics", "- .diagnostics", "+ .persist",
                       "- .persist", "+ .cleanup", "- .cleanup", "- .finalize"}));
    EXPECT_EQ(session.translator->calls, (Strings{"run", "listen.stop.afterTranslationDrain done",
                                                  "finish", "cleanup", "close"}));
    Strings stopReasons;
    for (const auto& reason : session.refreshes) {
        if (reason.starts_with("listen.") || reason.starts_with("session."))
            stopReasons.push_back(reason);
    }
    EXPECT_EQ(stopReasons,
              (Strings{"session.transition.stopping", "listen.stop.seal",
                       "listen.stop.translationDrain.complete", "listen.stop.audioCompress.start",
                       "listen.stop.audioCompress.done", "session.transition.idle",
                       "listen.stop.finished"}));
    EXPECT_EQ(
        session.events("transcriber.finishDraining"),
        (Strings{"transcriber.finishDraining.start", "transcriber.finishDraining.captureStopped",
                 "transcriber.finishDraining.engineStopped", "transcriber.finishDraining.done"}));

    EXPECT_EQ(session.phase(), Phase::idle);
    EXPECT_EQ(session.status(), "点击开始，或按空格");
    EXPECT_EQ(session.transcript(id), "One is said.\nTwo follows late.");
    EXPECT_EQ(announced, std::vector{id});
    EXPECT_EQ(recording().audioFormat, "m4a/aac");
    EXPECT_FALSE(session.files.has(session.catalog->journalURL(id)));
    EXPECT_TRUE(session.files.has(session.catalog->wordTimelineURL(id)));
    EXPECT_FALSE(session.files.has(session.catalog->bilingualTranscriptURL(id)))
        << "no translation, no bilingual file";
    ASSERT_EQ(session.refinements.size(), 1U);
    EXPECT_EQ(session.refinements[0]->audioPath, recording().filePath);
    EXPECT_EQ(session.memoryReturns, 1);
    EXPECT_TRUE(session.server.openSources().empty());
    EXPECT_EQ(session.logLines("listen.stop.finalize.done")[0]["outcome"], "complete");
}

TEST(LiveTranscriptStoreFailureTests, TheSessionEndsInIdleWhateverFails) {
    const std::string idle = "点击开始，或按空格";
    const std::string notSaved = "转写保存失败，请检查磁盘空间。";
    using Session = SimulatedSession;
    enum When { before, during };
    struct Case {
        const char* name;
        When when;
        std::function<void(Session&)> arrange;
        std::string outcome;
        std::string status;
        std::string audio;              // its extension; empty: no recording
        std::string event;              // one that the case logs
        bool savesText = false;         // although other files are not saved
        std::string repaired = "Said."; // the text after the next start
    };
    const std::vector<Case> cases{
        {"the drain never ends", before,
         [](Session& s) {
             s.engine.script.finishNeverEnds = true;
             // The stop seals this line some time after the sound has ended.
             s.engine.script.lines = {{3, simulation::spoken(false, "and", 3)}};
         },
         "complete", idle, ".m4a", "speechAnalyzer.drain.timeout", true, "Said.\nand"},
        {"translations are missing", during,
         [](Session& s) { s.translator->drainCompletes = false; }, "degraded", idle, ".m4a",
         "listen.stop.translationDrain.done"},
        {"no time to translate", during,
         [](Session& s) { s.settings.translationDrainTimeoutSeconds = 0; }, "complete", idle,
         ".m4a", "listen.stop.translationDrain.done"},
        {"the encoder fails", during, [](Session& s) { s.media.failure = "no encoder"; },
         "complete", idle, ".wav", "listen.stop.audioCompress.failed"},
        {"too little sound for history", during, [](Session& s) { s.media.bytes = 1000; },
         "complete", idle, ".wav", "listen.stop.audioCompress.skipped"},
        {"lossless recording", during, [](Session& s) { s.settings.recordLosslessAudio = true; },
         "complete", idle, ".wav", "listen.stop.audioCompress.skipped"},
        {"transcripts not writable", during,
         [](Session& s) {
             s.files.refused = ".txt";
             s.say(false, "and"); // open until the stop seals it
         },
         "degraded", notSaved, ".m4a", "history.refine.schedule.skipped", false, "Said.\nand"},
        {"times not writable", during, [](Session& s) { s.files.refused = ".words.json"; },
         "degraded", notSaved, ".m4a", "recording.transcript.persist.degraded", true},
        {"disk full for all but the log", during,
         [](Session& s) {
             s.files.onOperation = [&s](const std::string&, const std::filesystem::path& path) {
                 const bool isLog = path.string().find("Logs") != std::string::npos;
                 s.files.capacity = isLog ? s.files.never : s.files.usedSpace();
             };
         },
         "degraded", notSaved, ".wav", "audioRecorder.write.degraded"},
        {"no recording", before, [](Session& s) { s.settings.recordWhileCaptioning = false; },
         "complete", idle, "", "listen.stop.audioCompress.skipped"},
        {"recogniser dies", during, [](Session& s) { s.engine.session().fail("out of memory"); },
         "complete", idle, ".m4a", "listen.stop.audioCompress.done"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Session session;
        session.launch();
        if (c.when == before)
            c.arrange(session);
        session.start();
        session.hear(2);
        session.say(true, "Said.");
        if (c.when == during)
            c.arrange(session);
        session.hear(2);
        session.stop();
        session.host.advanceBy(20);
        EXPECT_EQ(session.phase(), Phase::idle);
        EXPECT_FALSE(session.store->isStopping());
        EXPECT_EQ(session.status(), c.status);
        session.files.onOperation = {};
        session.files.recover();
        EXPECT_EQ(session.logLines("listen.stop.finalize.done").at(0)["outcome"], c.outcome);
        EXPECT_FALSE(session.events(c.event).empty());
        const auto recordings = session.catalog->recordings();
        ASSERT_EQ(recordings.size(), c.audio.empty() ? 0U : 1U);
        if (recordings.empty())
            continue;
        const bool isSaved = c.status == idle;
        EXPECT_TRUE(recordings[0].filePath.ends_with(c.audio)) << recordings[0].filePath;
        EXPECT_TRUE(session.files.has(recordings[0].filePath));
        EXPECT_EQ(session.transcript(recordings[0].id), isSaved       ? c.repaired
                                                        : c.savesText ? "Said."
                                                                      : "");
        const auto timeline = HistoryWordTimeline::decoded(
            session.files.contentsOf(session.catalog->wordTimelineURL(recordings[0].id)));
        if (timeline) {
            EXPECT_LE(timeline->sentences.back().end, recordings[0].duration);
            EXPECT_LE(timeline->words.back().t, recordings[0].duration);
        }
        EXPECT_EQ(session.refinements.size(), isSaved ? 1U : 0U);
        // The next start restores from the journal what could not be saved.
        EXPECT_EQ(session.files.has(session.catalog->journalURL(recordings[0].id)), !isSaved);
        session.launch();
        EXPECT_EQ(session.transcript(recordings[0].id), c.repaired);
    }
}

TEST_F(LiveTranscriptStoreStopTests, ATranscriptThatCouldNotBeSavedIsSavedOnceThereIsRoom) {
    const std::string all = "Before.\nIn between.\nAfter.";
    const struct {
        const char* stored; ///< the text that another program has saved meanwhile
        const char* refined;
        bool anotherWrites;
        std::string text;
    } cases[] = {{nullptr, nullptr, false, all},
                 {"Before.\nAfter.", nullptr, false, all}, // as recovered from the journal
                 {"Refined.", nullptr, false, "Refined."},
                 {nullptr, "Before.", false, "Before."},
                 {nullptr, nullptr, true, ""}};
    for (const auto& [stored, refined, anotherWrites, text] : cases) {
        session.launch();
        session.start();
        session.hear(1);
        session.say(true, "Before.");
        session.files.onOperation = [&](const std::string&, const std::filesystem::path&) {
            session.files.capacity = session.files.usedSpace();
        };
        session.say(true, "In between.");
        session.say(true, "After.");
        endAndWait();
        session.files.onOperation = {};
        session.files.recover();
        const UUID id = recording().id;
        EXPECT_EQ(session.transcript(id), "");
        if (stored)
            session.catalog->saveTranscript(stored, id);
        if (refined)
            session.catalog->saveRefinedTranscript(refined, "", {}, id);
        session.anotherWrites = anotherWrites;
        session.refinements.clear();
        session.start();
        session.hear(1);
        EXPECT_EQ(session.transcript(id), text);
        EXPECT_EQ(session.catalog->recording(id)->endedAt.has_value(), !anotherWrites);
        EXPECT_EQ(session.files.has(session.catalog->journalURL(id)), anotherWrites);
        ASSERT_EQ(session.refinements.size(), text == all ? 1U : 0U);
        EXPECT_TRUE(text != all || session.refinements[0]->recordingID == id);
        endAndWait();
        session.catalog->deleteAll();
    }
}

TEST_F(LiveTranscriptStoreStopTests, OnlyASessionWithoutSoundIsDiscarded) {
    for (const bool hears : {false, true}) {
        session.launch();
        session.start();
        if (hears)
            session.hear(0.5);
        endAndWait();
        EXPECT_EQ(session.store->view().outcome->value().heardNothing, !hears);
        EXPECT_EQ(session.catalog->recordings().size(), hears ? 1U : 0U);
        EXPECT_EQ(session.files.list(session.paths.recordings()).empty(), !hears);
    }
}

TEST_F(LiveTranscriptStoreStopTests, ErrorMessagesAreNotPartOfTheTranscript) {
    begin();
    session.say(true, "Said.");
    session.store->showError("录音写入失败：x");
    EXPECT_EQ(session.store->texts().exportTranscriptSnapshot().sourceText, "Said.");
    endAndWait();
    EXPECT_EQ(session.transcript(recording().id), "Said.");
}

TEST_F(LiveTranscriptStoreStopTests, ClearedCaptionsLeaveTheScreenAndAreSaved) {
    begin();
    session.say(true, "One is said.");
    session.say(false, "Two foll");
    session.store->clearCaptions();
    EXPECT_FALSE(*session.store->view().hasVisibleSourceTextFlag);
    EXPECT_TRUE(session.store->view().captionDisplay.frame->sourceTextTail.empty());
    EXPECT_FALSE(session.store->view().captionDisplay.frame->livePartialRow);
    session.say(true, "Two follows.");
    session.store->clearCaptions(); // before the next sentence has begun
    session.say(true, "Three stays.");
    EXPECT_EQ(session.store->texts().visibleText().sourceText, "Three stays.");
    endAndWait();
    EXPECT_EQ(session.transcript(recording().id), "One is said.\nTwo follows.\nThree stays.");
}

TEST_F(LiveTranscriptStoreStopTests, ATranslationAfterTheStopStillReachesTheTranscript) {
    begin();
    session.say(true, "Said.");
    const auto translate = [&](const std::string& text) {
        session.translator->captions->changeCommittedSegments(
            [&](std::span<CaptionSegment> rows) { rows.front().translatedText = text; });
        session.translator->captions->updatePersistedTranscriptIfStopped();
        session.host.advanceBy(0);
    };
    const auto saved = [&] {
        return session.files.contentsOf(session.catalog->bilingualTranscriptURL(recording().id));
    };
    translate("说了。");
    EXPECT_EQ(saved(), "") << "no bilingual file while the session listens";
    EXPECT_NE(session.files.contentsOf(session.catalog->journalURL(recording().id)).find("说了。"),
              std::string::npos);
    endAndWait();
    EXPECT_EQ(saved(), "Said.\n说了。");
    translate("已经说了。");
    EXPECT_EQ(saved(), "Said.\n已经说了。");
    session.files.refused = ".txt";
    translate("再说。");
    EXPECT_EQ(session.events("recording.transcript.update").size(), 2U);
    session.files.recover();
    translate(""); // another language was chosen, and no translation has arrived yet
    EXPECT_EQ(saved(), "Said.\n已经说了。");
    const auto text = session.catalog->transcriptURL(recording().id);
    session.files.setContents(text, "Refined by another program.");
    translate("再说。");
    EXPECT_EQ(session.transcript(recording().id), "Refined by another program.");
    session.files.setContents(text, "Said.");
    session.catalog->saveRefinedTranscript("Said better.", "", {}, recording().id);
    translate("再说。");
    EXPECT_EQ(session.transcript(recording().id), "Said better.");
    const UUID id = recording().id;
    session.catalog->deleteRecording(id);
    translate("又说。");
    EXPECT_EQ(session.transcript(id), "");
}

TEST_F(LiveTranscriptStoreStopTests, ALateTranslationWaitsForTheDataFolder) {
    begin();
    session.say(true, "Said.");
    endAndWait();
    const auto bilingual = session.catalog->bilingualTranscriptURL(recording().id);
    session.anotherWrites = true;
    session.translator->captions->changeCommittedSegments(
        [&](std::span<CaptionSegment> rows) { rows.front().translatedText = "说了。"; });
    session.translator->captions->updatePersistedTranscriptIfStopped();
    EXPECT_FALSE(session.files.has(bilingual));
    session.anotherWrites = false;
    session.store.reset(); // the program ends
    EXPECT_EQ(session.files.contentsOf(bilingual), "Said.\n说了。");
}

TEST_F(LiveTranscriptStoreStopTests, ARecordingDeletedDuringItsSessionDoesNotComeBack) {
    begin();
    session.say(true, "Said.");
    session.catalog->deleteRecording(recording().id);
    endAndWait();
    EXPECT_TRUE(session.catalog->recordings().empty());
    EXPECT_TRUE(session.files.list(session.paths.transcripts()).empty());
}

TEST_F(LiveTranscriptStoreStopTests, ASupersededRecordingAndOneThatStartsAfterTheStopAreDeleted) {
    session.launch();
    LiveRecordingTracker tracker(session.host, session.files, *session.catalog, session.logger);
    const CaptionCore core = LiveCaptionCoreFactory::make(session.host, session.settings);
    for (const bool isListening : {true, true, false}) {
        RecordingMetadata metadata;
        metadata.id = UUID::random();
        metadata.filePath = session.paths.recordings() / (metadata.id.text() + ".wav");
        session.files.setContents(metadata.filePath, "sound");
        session.catalog->upsert(metadata);
        tracker.handleStarted(metadata, isListening, core, "option");
        EXPECT_EQ(recording().id == metadata.id, isListening);
        EXPECT_EQ(session.catalog->recordings().size(), 1U);
    }
    tracker.discardCurrentRecordingIfAny();
    EXPECT_TRUE(session.files.list(session.paths.recordings()).empty());
    EXPECT_TRUE(session.files.list(session.paths.transcripts()).empty());
}

TEST_F(LiveTranscriptStoreStopTests, TheM4AIsMadeWhileTheSessionIsRecorded) {
    for (const bool encoderFails : {false, true}) { // each round adds a recording
        begin();
        session.hear(10);
        const auto part = std::filesystem::path(recording().filePath).stem().string() + ".m4a.part";
        EXPECT_TRUE(session.files.has(session.paths.recordings() / part));
        session.media.failure = encoderFails ? "busy" : "";
        session.hear(6);
        session.media.failure.clear();
        EXPECT_TRUE(recording().filePath.ends_with(".wav"));
        endAndWait();
        EXPECT_TRUE(recording().filePath.ends_with(".m4a"));
        EXPECT_NEAR(recording().duration, 18, 0.5);
        EXPECT_EQ(session.media.transcodings, encoderFails ? 1 : 0);
        EXPECT_EQ(session.files.list(session.paths.recordings()).size(), encoderFails ? 2U : 1U);
    }
}

TEST_F(LiveTranscriptStoreStopTests, AWithdrawnGuessDisappearsAtOnceAndIsNotSaved) {
    begin();
    session.say(true, "Before.");
    session.say(false, "Um");
    EXPECT_EQ(session.store->view().captions.currentPartial->sourceText, "Um");
    session.engine.session().give({{}, true, {""}});
    session.host.advanceBy(0);
    EXPECT_EQ(session.store->view().captions.currentPartial->sourceText, "");
    session.say(false, "still open");
    endAndWait();
    EXPECT_EQ(session.transcript(recording().id), "Before.\nstill open");
}

TEST_F(LiveTranscriptStoreStopTests, AKilledSessionIsReadableAtTheNextStart) {
    begin();
    session.say(true, "Said before the end.");
    session.host.advanceBy(1);
    const UUID id = recording().id;
    session.files.failFrom = session.files.operations + 1; // nothing more reaches the disk
    session.hear(1);
    endAndWait();
    session.store.reset(); // so that it does not save again
    session.files.recover();
    session.catalog->setNote("of before", id);
    session.launch();
    session.catalog->setNote("of now", id);
    EXPECT_EQ(session.repaired.recoveredSessions, std::vector<UUID>{id});
    EXPECT_EQ(session.transcript(id), "Said before the end.");
    EXPECT_GT(recording().duration, 1.5);
    EXPECT_TRUE(recording().filePath.ends_with(".wav"));
    session.host.advanceBy(10);
    EXPECT_TRUE(recording().filePath.ends_with(".m4a")) << "the next start compresses it";
    EXPECT_EQ(recording().note, "of now");
    EXPECT_EQ(session.files.list(session.paths.recordings()).size(), 1U);
}

TEST_F(LiveTranscriptStoreStopTests, ARecordingWhoseCompressionEndsTheProgramStaysAWAV) {
    begin();
    session.say(true, "Said.");
    session.files.failFrom = session.files.operations + 1;
    endAndWait();
    for (const char* extension : {".wav", ".wav", ".none"}) { // using such a file ends the program
        session.store.reset();
        session.compressor.reset();
        session.files.recover();
        session.launch();
        session.files.onOperation = [&](const std::string&, const std::filesystem::path& path) {
            if (path.extension() == extension)
                session.files.failFrom = session.files.operations;
        };
        session.host.advanceBy(10);
        session.files.onOperation = {};
    }
    EXPECT_TRUE(recording().filePath.ends_with(".wav"));
    session.catalog->deleteRecording(recording().id);
    EXPECT_TRUE(session.files.list(session.paths.transcripts()).empty());
}

TEST_F(LiveTranscriptStoreStopTests, TheProgramEndsWhenTheSessionIsSavedOrAfterFiveSeconds) {
    using Handler = TessaruneListeningLifecycleHandler;
    session.launch();
    std::vector<double> replies;
    Handler handler(session.host, session.logger, session.store,
                    [&] { replies.push_back(session.host.now()); });
    EXPECT_EQ(handler.applicationShouldTerminate(), Handler::TerminateReply::now);
    for (const double translating : {1.0, 60.0}) {
        session.translator->drainSeconds = translating;
        session.settings.translationDrainTimeoutSeconds = 60;
        session.start();
        const double asked = session.host.now();
        EXPECT_EQ(handler.applicationShouldTerminate(), Handler::TerminateReply::later);
        session.host.advanceBy(10);
        ASSERT_FALSE(replies.empty());
        EXPECT_NEAR(replies.back() - asked, std::min(translating, 5.0), 0.06);
        EXPECT_EQ(session.logLines("app.shouldTerminate.done").back()["completed"],
                  translating < 5);
        EXPECT_EQ(session.store->isStopping(), translating > 5);
    }
    EXPECT_EQ(handler.applicationShouldTerminate(), Handler::TerminateReply::later);
    handler.handleApplicationWillTerminate();
    session.host.advanceBy(60);
    EXPECT_EQ(replies.size(), 3U);
    EXPECT_EQ(session.events("listen.stop.requested").size(), 2U);
    session.store.reset();
    EXPECT_EQ(handler.applicationShouldTerminate(), Handler::TerminateReply::now);
}

} // namespace
} // namespace tessarune
