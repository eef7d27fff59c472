#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/translation/TranslationSupport.h"
#include "tests/translation/TranslatedSession.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tessarune {
namespace {

using testing::ScriptedTranslationService;
using testing::serviceError;
using Status = TranslationAvailabilityStatus;
using Strings = std::vector<std::string>;

constexpr const char* pairKey = "en-US->fr-FR";

struct CommittedTranslationTests : ::testing::Test, testing::TranslatedSession {
    void answerWith(std::vector<std::optional<TranslationError>> errors, double delay = 0) {
        for (const auto& error : errors)
            service->answers.push_back(
                {delay, error ? std::optional(serviceError(error, "no")) : std::nullopt});
    }
    /// Makes the next units fail recoverably, in the first attempt and in the automatic retry.
    void failUnits(int count) {
        answerWith({static_cast<std::size_t>(2 * count), TranslationError::internalError});
    }
    void settle() { host.advanceBy(100); }
};

TEST_F(CommittedTranslationTests, SentencesAreTranslatedInOrderWhileNewOnesCome) {
    service->pairs[pairKey].preparation.delay = 1;
    service->pairs[pairKey].isReady = false;
    service->answer = [](auto&) { return ScriptedTranslationService::Answer{0.5, std::nullopt}; };
    commit({"One."});
    EXPECT_TRUE(isPreparing());
    EXPECT_EQ(status(), "正在准备 Apple 离线翻译语言资源…");
    host.advanceBy(1.2);
    commit({"and", "two.", " ", "Three"});
    EXPECT_EQ(shown(), (Strings{"?", "?", "?", "?", "?"}));
    EXPECT_TRUE(translation->isCommittedTranslating());
    settle();
    EXPECT_EQ(shown(), (Strings{"fr-FR:One.", "", "fr-FR:and two.", "?", "?"})) << "Three is open";
    EXPECT_EQ(rows[1].translationResultSegmentID, rows[2].id);
    EXPECT_EQ(service->mostTranslationsInFlight, 1);
    EXPECT_FALSE(isPreparing());
    EXPECT_EQ(status(), "");
    EXPECT_TRUE(hasRefreshed("translation.languagePreparation.done.prepared"));
    EXPECT_GE(persisted, 2);
    EXPECT_EQ(patched, "fr-FR:and two.") << "the refresh must carry the unit as a patch";

    ASSERT_EQ(observations.size(), 4u); // a start and a success each
    EXPECT_EQ(observations[1].phase, TranslationObservation::Phase::success);
    EXPECT_EQ(observations[1].durationSeconds, 0.5);
    EXPECT_EQ(observations[1].diagnostics.preflightStatus, "installed");
    EXPECT_NEAR(*observations[1].queueDelaySeconds, 1.0, 0.01);
    const nlohmann::ordered_json json = observations[3];
    EXPECT_EQ(json["scope"], "committed");
    EXPECT_EQ(json["segmentIDs"][1], json["resultSegmentID"]);
    EXPECT_EQ(json["translatedCharacters"], 14);
    EXPECT_FALSE(json.contains("error"));
}

TEST_F(CommittedTranslationTests, AResultForFormerSettingsIsDiscarded) {
    commit({"Warm up."});
    settle();
    service->answer = [](auto&) { return ScriptedTranslationService::Answer{5, std::nullopt}; };
    commit({"Hello."});
    host.advanceBy(1);
    translation->setTranslationTarget("de");
    EXPECT_EQ(shown(), (Strings{"?", "?"})) << "another target makes all rows pending";
    settle();
    EXPECT_EQ(shown(), (Strings{"de-DE:Warm up.", "de-DE:Hello."}));

    commit({"Late."});
    host.advanceBy(1);
    settings.translationTargetLanguage = "it"; // not by `setTranslationTarget`
    host.advanceBy(1);
    settings.translationTargetLanguage = "de";
    EXPECT_EQ(shown(), (Strings{"?", "?", "?"}));
    host.advanceBy(11); // enough for two answers
    translation->setTranslationBackend("关闭");
    settle();
    EXPECT_EQ(shown(), (Strings{"de-DE:Warm up.", "de-DE:Hello.", "?"}));
    EXPECT_EQ(statusMessage, "翻译已关闭。");
    EXPECT_FALSE(hasRefreshed("settings.translationBackend")) << "switching off redraws no row";
    translation->retryIncompleteTranslations();
    EXPECT_EQ(status(), "请先开启 Apple 离线翻译后再补齐译文");

    service->takeCalls();
    statusMessage = "";
    translation->setTranslationTarget("en");
    EXPECT_EQ(statusMessage, "翻译已关闭。");
    translation->setTranslationBackend("苹果");
    settle();
    EXPECT_EQ(shown(), (Strings{"Warm up.", "Hello.", "Late."}));
    EXPECT_EQ(service->takeCalls(), Strings{}) << "text in the target language is not sent";
    translation->setTranslationBackend("Google");
    EXPECT_EQ(statusMessage, "Google翻译尚未接入，请切换到苹果离线翻译。");
}

TEST_F(CommittedTranslationTests, TextInTheTargetLanguageAndBlankTextNeedNoTranslator) {
    hasTranslator = false;
    translation->setTranslationTarget("en-GB");
    commit({" Hello. ", "\t"});
    settle();
    EXPECT_EQ(shown(), (Strings{"Hello.", ""}));
    EXPECT_EQ(translatorsMade, 0);
    translation->setTranslationTarget("fr");
    EXPECT_EQ(shown(), (Strings{"?", "?"}));
    EXPECT_EQ(statusMessage, "当前系统不支持 Apple 离线翻译。");
    EXPECT_TRUE(hasRefreshed("translation.prepare.blocked"));
}

TEST_F(CommittedTranslationTests, OneAutomaticRetryIsSilent) {
    answerWith({TranslationError::unableToIdentifyLanguage, std::nullopt});
    commit({"Hello."});
    host.advanceBy(0.3);
    const auto calls = service->takeCalls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "translate Hello."), 1);
    host.advanceBy(0.2);
    EXPECT_EQ(service->takeCalls(), Strings{"translate Hello."}) << "the retry waits 0.4 seconds";
    EXPECT_EQ(shown(), Strings{"fr-FR:Hello."});
    EXPECT_EQ(runtime->committedHealth.consecutiveFailedUnits, 0);
    EXPECT_EQ(observations.back().diagnostics.attemptCount, 2);
    EXPECT_EQ(std::count(events.begin(), events.end(), "translation.committed.autoRetry"), 1);

    answerWith({TranslationError::internalError});
    commit({"Not again."});
    host.advanceBy(0.2);
    settings.translationBackend = "关闭";
    service->takeCalls();
    settle();
    EXPECT_EQ(service->takeCalls(), Strings{}) << "translation was switched off before the retry";
    EXPECT_EQ(shown().back(), "?");
}

TEST_F(CommittedTranslationTests, ConsecutiveFailuresRebuildThePairAndThenWarn) {
    commit({"Warm up."});
    settle();
    service->takeCalls();
    failUnits(6);
    std::vector<std::string> journal;
    TessaruneLog::setSink([&](auto, auto, const std::string& text) { journal.push_back(text); });
    for (int unit = 1; unit <= 6; ++unit) {
        keepsTexts = unit > 1;
        commit({"Hello."});
        settle();
        EXPECT_EQ(runtime->committedHealth.consecutiveFailedUnits, unit);
        EXPECT_EQ(runtime->committedSessionGeneration, unit < 3 ? 0 : 1);
        EXPECT_EQ(status(), unit < 5 ? ""
                                     : "连续 " + std::to_string(unit) +
                                           " 条译文未完成，Apple 翻译可能暂不可用");
        EXPECT_EQ(shown().back(), "!no");
    }
    TessaruneLog::setSink({});
    ASSERT_GE(journal.size(), 2u);
    EXPECT_EQ(journal.front().find("Hello"), std::string::npos) << journal.front();
    EXPECT_NE(journal.back().find("source='Hello.' target="), std::string::npos) << journal.back();
    const auto calls = service->takeCalls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), std::string("session ") + pairKey), 1);

    commit({"Better."});
    settle();
    EXPECT_EQ(shown().back(), "fr-FR:Better.");
    EXPECT_EQ(status(), "");
    EXPECT_EQ(runtime->committedHealth.unresolvedUnitIDs.size(), 6u);
    translation->retryIncompleteTranslations();
    settle();
    EXPECT_EQ(shown(), (Strings{"fr-FR:Warm up.", "fr-FR:Hello.", "fr-FR:Hello.", "fr-FR:Hello.",
                                "fr-FR:Hello.", "fr-FR:Hello.", "fr-FR:Hello.", "fr-FR:Better."}));
}

TEST_F(CommittedTranslationTests, AfterAFailedRebuildTheRunContinuesOrShowsTheFailure) {
    struct Case {
        ScriptedTranslationService::Pair pair;
        std::string last, status;
    };
    const Case cases[] = {
        {{Status::installed, false, true, {0, serviceError(TranslationError::internalError)}},
         "!went wrong", // the run continues and keeps failing
         ""},
        {{Status::unsupported}, "?", "翻译失败：不支持的翻译方向: en → fr"},
    };
    for (const auto& c : cases) {
        rows.clear();
        service->pairs[pairKey] = {};
        translation->retryIncompleteTranslations();
        commit({"Warm up."});
        settle();
        failUnits(3);
        commit({"One.", "Two.", "Three.", "Four."});
        onChange = [&](auto&) { // at the failure that triggers the rebuild
            if (rows.back().translationError == std::nullopt && rows[3].translationError)
                service->pairs[pairKey] = c.pair;
        };
        settle();
        EXPECT_EQ(shown().back(), c.last);
        EXPECT_EQ(status(), c.status);
        EXPECT_EQ(shown()[3], "!no");
        onChange = [](auto&) {};
        runtime->bigCleanup();
    }
}

TEST_F(CommittedTranslationTests, MissingLanguageFilesAreReportedInTheTargetLanguage) {
    commit({"Warm up."});
    settle();
    const std::string message(TranslationSupport::languageResourceNotReadyMessage("fr"));
    answerWith({TranslationError::notInstalled});
    commit({"One.", "Two."});
    settle();
    EXPECT_EQ(shown(), (Strings{"fr-FR:Warm up.", "!" + message, "?"})) << "the run must stop";
    EXPECT_EQ(status(), message);
    EXPECT_EQ(runtime->languageResourceFailures.size(), 1u);

    commit({"Three."}); // the files are back
    settle();
    EXPECT_EQ(shown(), (Strings{"fr-FR:Warm up.", "fr-FR:One.", "fr-FR:Two.", "fr-FR:Three."}))
        << "a success must retry the failed row";
    EXPECT_TRUE(runtime->languageResourceFailures.empty());
    EXPECT_FALSE(runtime->committedHealth.hasUnresolvedUnits());
}

TEST_F(CommittedTranslationTests, RowsStayPendingWhileTheirPairIsDownloaded) {
    service->pairs[pairKey] = {Status::supported, false, true, {30, std::nullopt}};
    commit({"One."});
    host.advanceBy(20);
    commit({"Two."});
    translation->setTranslationTarget("en");
    EXPECT_FALSE(isPreparing()) << "the new target needs no preparation";
    translation->setTranslationTarget("fr");
    host.advanceBy(5);
    EXPECT_EQ(shown(), (Strings{"?", "?"}));
    EXPECT_TRUE(isPreparing());
    EXPECT_FALSE(translation->isCommittedTranslating());
    settle();
    EXPECT_EQ(shown(), (Strings{"fr-FR:One.", "fr-FR:Two."}));
    EXPECT_FALSE(isPreparing());
    const auto& calls = service->calls;
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "prepare"), 1);
}

TEST_F(CommittedTranslationTests, ThePreparationIsTriedFiveTimesASecondApart) {
    struct Case {
        ScriptedTranslationService::Pair pair;
        int attempts;
        std::string status, shown;
    };
    const ScriptedTranslationService::Answer offline{0, serviceError(std::nullopt, "offline")};
    const Case cases[] = {
        {{Status::unsupported}, 0, "翻译失败：不支持的翻译方向: en → fr", "?"},
        {{Status::supported, false, false},
         5,
         std::string(TranslationSupport::languageResourceNotReadyMessage("fr")),
         "?"},
        // The failure may be temporary: the run continues and finds the pair still unprepared.
        {{Status::supported, false, true, offline}, 5, "正在准备 Apple 离线翻译语言资源…", "?"},
    };
    for (const auto& c : cases) {
        testing::TranslatedSession session;
        session.service->pairs[pairKey] = c.pair;
        session.commit({"One."});
        session.host.advanceBy(3.5);
        EXPECT_TRUE(session.isPreparing() || c.attempts == 0);
        session.host.advanceBy(60);
        const auto& calls = session.service->calls;
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "prepare"), c.attempts);
        EXPECT_EQ(session.status(), c.status);
        EXPECT_EQ(session.shown().back(), c.shown);
    }
}

} // namespace
} // namespace tessarune
