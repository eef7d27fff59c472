#include "TessaruneCore/recognition/ModelCatalog.h"
#include "tests/simulation/SimulatedSession.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using simulation::SimulatedSession;
using Phase = LiveSessionPhase;
using Strings = std::vector<std::string>;

class LiveTranscriptStoreStartTests : public ::testing::Test {
  protected:
    std::string field(const std::string& event, const std::string& name) {
        const auto lines = session.logLines(event);
        return lines.empty() ? "no event" : lines.back()[name].get<std::string>();
    }
    const std::string& liveLine() {
        return session.store->view().captions.currentPartial->sourceText;
    }
    bool isAtRest() {
        return session.server.openSources().empty() && session.catalog->recordings().empty();
    }
    SimulatedSession session;
};

TEST_F(LiveTranscriptStoreStartTests, AStartTakesItsStepsInOrder) {
    Strings& calls = session.translator->calls;
    session.diagnostics->onSentinelStop = [&](const std::string& reason) {
        calls.push_back("sentinel " + reason);
    };
    session.diagnostics->onStart = [&](const SessionDiagnostics::Start& start) {
        calls.push_back("run of " + start.source.logName());
    };
    session.launch();
    session.settings.audioInactivityAutoStopMinutes = 7; // not among the choices, so 1 is used
    session.start();
    EXPECT_EQ(session.phases,
              (std::vector<Phase>{Phase::preparing, Phase::loading, Phase::listening}));
    EXPECT_EQ(session.status(), "");
    EXPECT_TRUE(*session.store->view().isListening);
    EXPECT_EQ(calls, (Strings{"sentinel listen.start", "reset", "run of systemAudio",
                              "prewarm listen.start"}));
    EXPECT_EQ(session.refreshes,
              (Strings{"session.transition.preparing", "session.reset",
                       "session.transition.loading", "session.transition.listening"}));
    EXPECT_EQ(
        session.events("listen."),
        (Strings{"listen.start.prepared", "listen.start.task", "listen.start.permissions.request",
                 "listen.start.permissions.granted", "listen.start.transcriber.ready",
                 "listen.audioInactivityAutoStop.started"}));
    EXPECT_EQ(session.events("transcriber."),
              (Strings{"transcriber.start.request", "transcriber.engine.started",
                       "transcriber.recorder.start", "transcriber.capture.systemAudio.start",
                       "transcriber.start.ready"}));
    EXPECT_EQ(session.logLines("listen.start.prepared")[0]["audioInactivityAutoStopSeconds"], 60);
    EXPECT_EQ(session.server.openSources(), Strings{"a.monitor"});
    EXPECT_TRUE(session.store->recordingTracker().hasCurrentRecording());
    session.host.advanceBy(3.5);
    EXPECT_EQ(*session.store->view().sessionDuration, 3);
    session.start(); // a session is running
    EXPECT_EQ(session.events("listen.start.task").size(), 1U);
}

TEST_F(LiveTranscriptStoreStartTests, AFailureIsShownAndLeavesNothingBehind) {
    struct Case {
        const char* name;
        AudioSource source;
        std::function<void()> arrange;
        std::string message; // its beginning
    };
    const AudioSource system = AudioSource::systemAudio();
    const std::vector<Case> cases{
        {"microphone refused", AudioSource::microphone(),
         [&] { session.desktop.grantsMicrophone = false; }, "未授权「麦克风」。"},
        {"speech refused", system,
         [&] { session.desktop.speech = SystemAuthorization::Status::denied; },
         "未授权「语音识别」。"},
        {"no such microphone", AudioSource::microphone("gone"), [] {},
         "无法切换到所选麦克风设备。"},
        {"model does not load", system, [&] { session.engine.script.prepareFailure = "damaged"; },
         "damaged"},
        {"engine does not start", system, [&] { session.engine.script.startFailure = "no thread"; },
         "no thread"},
        {"capture refused", system,
         [&] { session.server.openFailure.emplace(SoundServerError::accessDenied, "denied"); },
         "启动系统音频接收失败"},
        {"folder not writable", system, [&] { session.files.refused = "Recordings"; }, ""},
    };
    session.launch();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        session.store->selectSource(c.source);
        c.arrange();
        session.store->handleAudioLevel(0.5);
        session.start();
        EXPECT_EQ(session.phase(), Phase::failed);
        EXPECT_FALSE(*session.store->view().isListening);
        EXPECT_EQ(session.store->view().audioLevel, 0.08); // at rest
        EXPECT_TRUE(liveLine().starts_with(c.message)) << liveLine();
        EXPECT_FALSE(liveLine().empty());
        EXPECT_EQ(field("listen.start.failed", "error"), liveLine());
        EXPECT_NE(session.store->view().startFailure, nullptr);
        EXPECT_EQ(session.refreshes.back(), "error.presentation");
        session.stop(); // nothing to stop
        EXPECT_EQ(session.phase(), Phase::failed);

        session.calm();
        EXPECT_TRUE(isAtRest());
        session.host.runUntilIdle(session.host.now() + 100);
        session.store->selectSource(system);
        session.start();
        EXPECT_EQ(session.phase(), Phase::listening);
        EXPECT_EQ(liveLine() + *session.store->view().presentedError, "");
        session.hear(1);
        session.stop();
        session.host.advanceBy(10);
        for (const auto& recording : session.catalog->recordings())
            session.catalog->deleteRecording(recording.id);
    }
}

TEST_F(LiveTranscriptStoreStartTests, StartsAndTogglesAreRefusedWhileStopping) {
    session.launch();
    session.start();
    session.engine.script.finishNeverEnds = true;
    session.store->stopListening(LiveSessionControlTrigger::toolbarPill());
    const std::string saving = session.status();
    session.store->toggleListening(LiveSessionControlTrigger::toolbarPill());
    EXPECT_EQ(session.status(), saving);
    session.store->startListening(LiveSessionControlTrigger::dockReopen());
    EXPECT_EQ(session.status(), "正在收尾保存，请稍候…");
    EXPECT_EQ(session.refreshes.back(), "listen.start.ignoredWhileStopping");
    EXPECT_EQ(field("listen.toggle.ignoredWhileStopping", "trigger"), "toolbar.listeningPill");
    EXPECT_EQ(field("listen.start.ignoredWhileStopping", "trigger"), "dock.reopen.toggleRecord");
    session.host.advanceBy(10);
    EXPECT_EQ(session.phase(), Phase::idle);
    EXPECT_EQ(session.events("listen.start.task").size(), 1U);
}

TEST_F(LiveTranscriptStoreStartTests, AnotherSourceEndsTheSessionAndBeginsTheNext) {
    session.launch();
    session.store->selectSource(AudioSource::microphone("usb"));
    session.store->selectSource(AudioSource::systemAudio());
    EXPECT_EQ(session.phase(), Phase::idle);
    session.start();
    session.hear(1);
    session.say(true, "Before the switch.");
    session.store->selectSource(AudioSource::systemAudio()); // the same
    EXPECT_EQ(session.phase(), Phase::listening);
    session.store->selectSource(AudioSource::microphone("usb"));
    session.store->selectSource(AudioSource::microphone("mic")); // while it stops
    EXPECT_TRUE(*session.store->view().startsAgain);
    session.host.advanceBy(5);
    EXPECT_FALSE(*session.store->view().startsAgain);
    EXPECT_EQ(session.phase(), Phase::listening);
    EXPECT_EQ(session.server.openSources(), Strings{"mic"});
    EXPECT_EQ(field("listen.stop.requested", "trigger"), "settings.audioSource.switch");
    EXPECT_EQ(field("listen.start.task", "trigger"), "session.pendingRestart");
    EXPECT_FALSE(session.store->isStopping());
    EXPECT_TRUE(session.store->view().captions.committedSegments->empty());
    ASSERT_EQ(session.catalog->recordings().size(), 2U);
    EXPECT_EQ(session.transcript(session.catalog->recordings()[1].id), "Before the switch.");

    session.store->selectSource(AudioSource::microphone("usb"));
    session.stop(); // the last command wins
    session.host.advanceBy(5);
    EXPECT_EQ(session.phase(), Phase::idle);
}

TEST_F(LiveTranscriptStoreStartTests, AnotherRecognitionModelTakesOverInTheSession) {
    const std::string other = ModelCatalog::recognitionOptions().at(1).id;
    const std::string third = ModelCatalog::recognitionOptions().at(2).id;
    session.launch();
    session.start();
    session.hear(2);
    session.say(true, "First model.");
    session.engine.script.prepareSeconds = 1;
    for (const char* guess : {"A guess", "A guess that comes too late"}) {
        session.engine.session().give(simulation::spoken(false, guess, 1, 0.1));
        session.host.advanceBy(0.056); // the second guess is not shown yet
    }
    session.store->selectRecognitionOption(other);
    session.host.advanceBy(0.1);
    EXPECT_EQ(liveLine(), "正在切换识别模型…");
    EXPECT_TRUE(session.store->view().captions.committedSegments->empty());
    session.host.advanceBy(0.5);
    session.settings.selectedRecognitionOptionID = third; // the second model gets no sound
    session.host.advanceBy(2);
    EXPECT_EQ(session.phase(), Phase::listening);
    EXPECT_EQ(session.engine.sessions.size(), 3U);
    EXPECT_EQ(*session.store->view().presentedError, "");
    session.hear(1);
    EXPECT_EQ(session.engine.sessions[1]->heardSeconds, 0);
    session.say(true, "Third model.");
    session.engine.script.prepareFailure = "damaged";
    session.store->selectRecognitionOption(other);
    session.host.advanceBy(2);
    EXPECT_EQ(session.phase(), Phase::listening);
    EXPECT_EQ(liveLine(), "damaged");
    session.stop();
    session.host.advanceBy(5);
    EXPECT_EQ(session.phase(), Phase::idle);
    const UUID id = session.catalog->recordings().at(0).id;
    EXPECT_EQ(session.transcript(id), "First model.\nA guess\nThird model.")
        << "the transcript has no messages of the program";
    const auto timeline = HistoryWordTimeline::decoded(
        session.files.contentsOf(session.catalog->wordTimelineURL(id)));
    EXPECT_EQ(timeline.value().sentences.at(0).timingKind,
              HistoryWordTimeline::TimingKind::audioWord);
}

TEST_F(LiveTranscriptStoreStartTests, AModelThatLoadsTooLateStartsNoRunInTheNextSession) {
    int runs = 0;
    session.diagnostics->onStart = [&](const auto&) {
        session.diagnostics->running = true;
        ++runs;
    };
    session.diagnostics->onFinish = [&](const auto&) { session.diagnostics->running = false; };
    session.launch();
    session.start();
    session.engine.script.prepareSeconds = 5;
    session.store->selectRecognitionOption(ModelCatalog::recognitionOptions().at(1).id);
    session.stop();
    session.host.advanceBy(3.5); // a drain may take three seconds
    session.start();
    EXPECT_EQ(runs, 2);
    session.host.advanceBy(20);
    EXPECT_EQ(session.phase(), Phase::listening);
    EXPECT_EQ(runs, 2);
}

TEST_F(LiveTranscriptStoreStartTests, SilenceStopsTheSessionAndAnySoundPostponesThat) {
    session.launch();
    session.settings.audioInactivityAutoStopMinutes = 1;
    session.start();
    session.settings.audioInactivityAutoStopMinutes = 0; // too late for this session
    session.host.advanceBy(10.1);
    EXPECT_EQ(session.status(), "没有听到系统声音");
    session.hear(1);
    EXPECT_EQ(session.status(), "");
    session.host.advanceBy(50);
    session.store->handleAudioLevel(0.01);
    session.host.advanceBy(50);
    session.store->handleAudioLevel(0.009);
    session.store->applyRecognition(ASREvent::partial("hello", 1, session.host.now()));
    session.host.advanceBy(50);
    EXPECT_EQ(session.phase(), Phase::listening);
    session.store->handleAudioLevel(0.009);
    session.host.advanceBy(16);
    EXPECT_EQ(session.phase(), Phase::idle);
    EXPECT_EQ(field("listen.stop.requested", "triggerCategory"), "automatic");
    EXPECT_EQ(field("listen.stop.requested", "trigger.timeoutSeconds"), "60.000");
    EXPECT_EQ(session.logLines("listen.stop.requested").back()["triggerUserInitiated"], false);
    const auto shown =
        std::find(session.refreshes.begin(), session.refreshes.end(), "audioInactivity.timeout");
    ASSERT_NE(shown, session.refreshes.end());
    EXPECT_EQ(*(shown + 1), "session.transition.stopping");
    session.start();
    EXPECT_EQ(session.events("listen.audioInactivityAutoStop.disabled").size(), 1U);
}

} // namespace
} // namespace tessarune
