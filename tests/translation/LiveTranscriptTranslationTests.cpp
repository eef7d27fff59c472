#include "tests/translation/TranslatedSession.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using testing::ScriptedTranslationService;
using testing::serviceError;
using Answer = ScriptedTranslationService::Answer;
using Status = TranslationAvailabilityStatus;
using Strings = std::vector<std::string>;

struct LiveTranscriptTranslationTests : ::testing::Test, testing::TranslatedSession {
    LiveTranscriptTranslationTests() {
        service->answer = [this](auto&) { return Answer{delay, std::nullopt}; };
    }
    double delay = 0.5;
};

using GhostTranslationTests = LiveTranscriptTranslationTests;

TEST_F(GhostTranslationTests, ThePreviewFollowsTheNewestCandidateAndDisappearsWithItsCommit) {
    speak("I think so.");
    host.advanceBy(0.2);
    speak("i THINK so");
    speak("Yes.");
    speak("?! …");
    host.advanceBy(1);
    EXPECT_EQ(preview(), "fr-FR:I think so.");
    EXPECT_EQ(std::count(service->calls.begin(), service->calls.end(), "translate I think so."), 1);
    EXPECT_FALSE(runtime->hasGhostTask());

    speak("First guess here.");
    host.advanceBy(0.2);
    delay = 0.1;
    speak("Second guess here.");
    host.advanceBy(0.2);
    EXPECT_EQ(preview(), "fr-FR:Second guess here.");
    host.advanceBy(5);
    EXPECT_EQ(preview(), "fr-FR:Second guess here.") << "the late answer is dropped";

    commit({"Something else."});
    host.advanceBy(5);
    EXPECT_EQ(preview(), "fr-FR:Second guess here.");
    commit({"second guess, here!"});
    host.advanceBy(5);
    EXPECT_EQ(preview(), "");
    EXPECT_TRUE(hasRefreshed("translation.ghost.clearMatched"));
    EXPECT_EQ(rows.back().translatedText, "fr-FR:second guess, here!");

    EXPECT_EQ(observations.front().scope, TranslationObservation::Scope::ghost);
    EXPECT_EQ(observations[1].durationSeconds, 0.5);
}

TEST_F(GhostTranslationTests, CommittedRowsAreTranslatedBeforePreviews) {
    delay = 2;
    commit({"Hello."});
    host.advanceBy(1);
    speak("Not now please.");
    EXPECT_FALSE(runtime->hasGhostTask());
    host.advanceBy(5);
    speak("Now it may.");
    EXPECT_TRUE(runtime->hasGhostTask());
    commit({"Done."});
    EXPECT_FALSE(runtime->hasGhostTask()) << "a run cancels the preview";
    host.advanceBy(10);
    EXPECT_EQ(preview(), "");
    EXPECT_EQ(shown(), (Strings{"fr-FR:Hello.", "fr-FR:Done."}));
}

TEST_F(GhostTranslationTests, APreviewThatFailsOrIsNoLongerWantedIsNotShown) {
    speak("This one stays.");
    host.advanceBy(1);
    const auto check = [&](const char* name, const std::function<void()>& during,
                           std::string expected) {
        host.advanceBy(1);
        speak(std::string("Candidate for ") + name);
        host.advanceBy(0.2);
        during();
        host.advanceBy(5);
        EXPECT_EQ(preview(), expected) << name;
        EXPECT_EQ(runtime->committedHealth, CommittedTranslationHealthState()) << name;
    };
    service->answers = {{0.5, serviceError(TranslationError::internalError)}};
    check(
        "a failure", [] {}, "fr-FR:This one stays.");
    EXPECT_EQ(observations.back().phase, TranslationObservation::Phase::failure);
    check(
        "translation switched off", [&] { settings.translationBackend = "关闭"; }, "");
    settings.translationBackend = "苹果";
    check(
        "another target", [&] { translation->setTranslationTarget("de"); }, "");
    check(
        "the preview switched off", [&] { settings.softTranslationEnabled = false; }, "");
    const auto drawn = refreshes.size();
    speak("Not while it is off.");
    EXPECT_EQ(refreshes.size(), drawn) << "without a preview to withdraw nothing is redrawn";
    translation->setSoftTranslationEnabled(true);
    translation->setTranslationTarget("en");
    check(
        "the source language as target", [] {}, "Candidate for the source language as target");
    service->pairs["en-US->ko-KR"].status = Status::unsupported;
    translation->setTranslationTarget("ko");
    check(
        "an unsupported pair", [] {}, "");
}

TEST_F(LiveTranscriptTranslationTests, TheDrainTranslatesTheTailWithinItsTimeLimit) {
    struct Case {
        const char* name;
        Strings texts;
        double delay; // of the translator; below 0: there is none
        bool finished;
        Strings shown;
        double seconds; // at most; the limit of 4 is checked every 0.05
        std::string backend = "苹果";
        Status status = Status::installed;
        double statusDelay = 0;
    };
    const Case cases[] = {
        {"no rows", {}, 1, true, {}, 0},
        {"an unfinished last row", {"One.", "and"}, 1, true, {"fr-FR:One.", "fr-FR:and"}, 2.2},
        {"translation switched off", {"One."}, 1, true, {"?"}, 0, "关闭"},
        {"a backend that is not connected", {"One."}, 1, true, {"?"}, 0, "Google"},
        {"no translator", {"One."}, -1, false, {"?"}, 0},
        {"a slow translator", {"One.", "Two."}, 3, false, {"fr-FR:One.", "?"}, 4.06},
        {"a translator that hangs", {"One."}, 1e6, false, {"?"}, 4.06},
        {"no model", {"One."}, 1, false, {"?"}, 0.06, "苹果", Status::supported},
        {"availability hangs", {"One."}, 1, false, {"?"}, 4.06, "苹果", Status::installed, 1e7},
    };
    for (const auto& c : cases) {
        testing::TranslatedSession session;
        session.service->answer = [&](auto&) { return Answer{c.delay, std::nullopt}; };
        const bool isReady = c.status == Status::installed;
        session.service->pairs["en-US->fr-FR"] = {c.status, isReady, isReady,
                                                  {},       {},      c.statusDelay};
        session.settings.translationBackend = c.backend;
        session.hasTranslator = c.delay > 0;
        if (!c.texts.empty())
            session.commit(c.texts);
        const double begun = session.host.now();
        std::optional<bool> finished;
        double ended = 0;
        std::exception_ptr error;
        auto drain = session.translation->drainCommittedTranslationsBeforePersist(4);
        spawn(Executor::main(session.host),
              testing::detail::store(std::move(drain), finished, error));
        while (!finished && session.host.step())
            ended = session.host.now();
        EXPECT_EQ(finished, c.finished) << c.name;
        EXPECT_LE(ended - begun, c.seconds) << c.name;
        EXPECT_EQ(session.shown(), c.shown) << c.name;
        EXPECT_TRUE(!c.texts.empty() || session.translatorsMade == 0) << c.name;
        session.host.advanceBy(2e6);
        EXPECT_EQ(session.shown(), c.shown) << c.name << ": a cancelled translation must not write";
    }
}

struct LiveTranslationRuntimeTests : LiveTranscriptTranslationTests {
    using Start = TranslationLanguagePreparationStart;

    Strings prepared; // what `onFinished` received
    Start prepare(const std::string& target) {
        return runtime->startLanguagePreparation(
            "en", target, runtime->translator(), "test", [this, target](const auto& result) {
                prepared.push_back(target + " " + std::string(name(result.outcome)));
            });
    }
    std::string rebuild(std::stop_token stop = {}) {
        std::string outcome;
        spawn(Executor::main(host),
              testing::noteOutcome(runtime->rebuildCommittedLanguagePair("en", "fr", stop),
                                   &outcome));
        host.runUntilIdle();
        return outcome;
    }
    static Task<void> wait(Executor executor, std::stop_token stop, bool* ended) {
        co_await sleep(executor, 10, stop);
        *ended = true;
    }
    LiveTranslationRuntime::Operation operation(bool& ended) {
        return [this, &ended](std::stop_token stop) {
            return wait(Executor::main(host), std::move(stop), &ended);
        };
    }
};

TEST_F(LiveTranslationRuntimeTests, OneRunIsActiveAndAFormerRunDoesNotClearItsSuccessor) {
    bool ghost = false, first = false, second = false, third = false;
    runtime->startGhostTask(runtime->beginGhostRequest("a", "fr"), operation(ghost));
    host.advanceBy(1);
    const UUID request = runtime->beginGhostRequest("a b", "fr");
    runtime->startGhostTask(request, operation(ghost));
    host.advanceBy(1);
    EXPECT_TRUE(runtime->hasGhostTask()) << "the former preview must not clear its successor";
    runtime->startCommittedTask(operation(first));
    host.advanceBy(1);
    EXPECT_FALSE(runtime->hasGhostTask()) << "a run must cancel the preview";
    EXPECT_FALSE(runtime->isCurrentGhostRequest("a b", "fr", request));

    runtime->startGhostTask(runtime->beginGhostRequest("c d", "fr"), operation(ghost));
    runtime->startCommittedTask(operation(second));
    EXPECT_FALSE(runtime->hasGhostTask()) << "another start must cancel the preview, too";
    host.advanceBy(1);
    EXPECT_FALSE(second) << "no second run starts beside the first";

    runtime->cancelCommittedTask();
    runtime->startCommittedTask(operation(third));
    host.advanceBy(5);
    EXPECT_TRUE(first) << "the cancelled run must end";
    EXPECT_TRUE(runtime->hasCommittedTask()) << "the cancelled run must not clear its successor";
    host.advanceBy(5);
    EXPECT_FALSE(runtime->hasCommittedTask());
}

TEST_F(LiveTranslationRuntimeTests, APreparationIsStartedOnceAndSupersededByThatOfAnotherPair) {
    for (const char* pair : {"en-US->fr-FR", "en-US->de-DE"})
        service->pairs[pair] = {Status::supported, false, true, {2, std::nullopt}};
    EXPECT_EQ(prepare("fr"), Start::started);
    host.advanceBy(1);
    EXPECT_EQ(prepare("fr"), Start::alreadyPreparing);
    EXPECT_EQ(prepare("de"), Start::started);
    EXPECT_FALSE(runtime->isPreparingLanguages("en", "fr"));
    EXPECT_TRUE(runtime->isPreparingLanguages("en", "de"));
    host.advanceBy(10);
    EXPECT_EQ(prepared, Strings{"de prepared"});
    EXPECT_FALSE(runtime->isPreparingLanguages("en", "de"));
    EXPECT_EQ(prepare("de"), Start::alreadyPrepared);
    EXPECT_EQ(prepare("fr"), Start::started) << "the superseded preparation has no result";
    runtime->bigCleanup();
    host.advanceBy(10);
    EXPECT_EQ(prepared.size(), 1u);
    EXPECT_EQ(runtime->cachedTranslator, nullptr);
    EXPECT_EQ(prepare("de"), Start::started) << "the cleanup must forget prepared pairs";
}

TEST_F(LiveTranslationRuntimeTests, HealthBelongsToAPair) {
    runtime->selectCommittedHealthPair("en", "fr");
    runtime->committedHealth.recordFailure(UUID::random(),
                                           CommittedTranslationFailureSeverity::recoverable);
    runtime->languageResourceFailures.insert(UUID::random());
    runtime->selectCommittedHealthPair("en", "fr");
    EXPECT_EQ(runtime->committedHealth.consecutiveFailedUnits, 1);
    runtime->selectCommittedHealthPair("en", "de");
    EXPECT_EQ(runtime->committedHealth, CommittedTranslationHealthState());
    EXPECT_TRUE(runtime->languageResourceFailures.empty());
}

TEST_F(LiveTranslationRuntimeTests, RebuildingNeedsATranslatorAndCountsGenerations) {
    EXPECT_EQ(rebuild(), "当前系统不支持 Apple 离线翻译");
    EXPECT_EQ(runtime->committedSessionGeneration, 0);
    runtime->translator();
    EXPECT_EQ(rebuild(), "done");
    EXPECT_EQ(prepare("fr"), Start::alreadyPrepared);

    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(rebuild(stop.get_token()), "cancelled");
    service->pairs["en-US->fr-FR"].status = Status::unsupported;
    EXPECT_EQ(rebuild(), "不支持的翻译方向: en → fr");
    EXPECT_EQ(prepare("fr"), Start::started) << "a failed pair is not prepared any more";
    EXPECT_EQ(runtime->committedSessionGeneration, 3);
    EXPECT_EQ(std::count(events.begin(), events.end(), "translation.languagePairRecovery.done"), 3);
}

} // namespace
} // namespace tessarune
