#include "Tessarune/translation/AppleTranslator.h"
#include "TessaruneCore/translation/TranslationSupport.h"
#include "tests/support/Await.h"
#include "tests/translation/ScriptedTranslationService.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using testing::await;
using testing::ScriptedTranslationService;
using testing::serviceError;
using Calls = std::vector<std::string>;
using Category = TranslationFailureCategory;
using Status = TranslationAvailabilityStatus;

constexpr const char* pairName = "en-US->fr-FR";

struct AppleTranslatorTests : ::testing::Test {
    SimulatedHost host{100};
    std::shared_ptr<ScriptedTranslationService> service =
        std::make_shared<ScriptedTranslationService>();
    AppleTranslator translator{host, service, Executor::main(host)};

    std::string translate(std::string text, std::string target = "fr") {
        try {
            return await(host, translator.translate(std::move(text), "en", std::move(target)));
        } catch (const TranslatorError& error) {
            return "failed: " + std::string(name(error.details().category));
        }
    }
    std::string prepare() { return outcome(translator.prepareLanguages("en", "fr")); }
    std::string rebuild() { return outcome(translator.rebuildLanguagePair("en", "fr")); }

  private:
    std::string outcome(Task<void> task) {
        try {
            await(host, std::move(task));
            return "ok";
        } catch (const TranslatorError& error) {
            return "failed: " + std::string(name(error.details().category));
        }
    }
};

TEST_F(AppleTranslatorTests, PreparesAPairOnceAndKeepsItsSession) {
    service->pairs[pairName] = {Status::supported, false};
    EXPECT_EQ(translate(" Hello. \n"), "fr-FR:Hello.");
    EXPECT_EQ(service->takeCalls(),
              (Calls{"status en-US->fr-FR", "status en-US->fr-FR", "session en-US->fr-FR",
                     "isReady", "prepare", "isReady", "translate Hello."}));
    EXPECT_EQ(translate("Again."), "fr-FR:Again.");
    EXPECT_EQ(prepare(), "ok");
    EXPECT_EQ(await(host, translator.availabilityStatus("en", "fr")), Status::installed);
    EXPECT_EQ(service->takeCalls(), Calls{"translate Again."});

    EXPECT_EQ(translate(" \n\t"), "");
    EXPECT_EQ(service->takeCalls(), Calls{}) << "blank text never reaches the service";
    EXPECT_EQ(service->callsOnMainQueue, 0) << "all of it happens on the translator's own queue";

    service->translation = [](auto&, auto&) { return std::string("漢字"); };
    EXPECT_EQ(translate("a", "zh-Hans"), "汉字");
    EXPECT_EQ(translate("a", "zh-Hant"), "漢字");
}

TEST_F(AppleTranslatorTests, AnUnsupportedPairIsNotAskedForAgainUntilARebuild) {
    service->pairs[pairName].status = Status::unsupported;
    EXPECT_EQ(translate("a"), "failed: unsupportedLanguagePairing");
    EXPECT_EQ(prepare(), "failed: unsupportedLanguagePairing");
    EXPECT_EQ(service->takeCalls(), Calls{"status en-US->fr-FR"});
    service->pairs[pairName].status = Status::supported;
    EXPECT_EQ(rebuild(), "ok");
    EXPECT_EQ(translate("a"), "fr-FR:a");

    EXPECT_EQ(await(host, translator.availabilityStatus("en", "de")), Status::installed);
    service->pairs["en-US->de-DE"].status = Status::unsupported;
    EXPECT_EQ(await(host, translator.availabilityStatus("en", "de")), Status::unsupported);
    service->pairs["en-US->de-DE"].status = Status::installed;
    EXPECT_EQ(await(host, translator.availabilityStatus("en", "de")), Status::unsupported);
}

TEST_F(AppleTranslatorTests, PreparationReportsWhyAPairIsNotReady) {
    const auto check = [this](const char* situation, ScriptedTranslationService::Pair pair,
                              std::string_view outcome, bool isPreparedThen) {
        service->pairs[pairName] = std::move(pair);
        EXPECT_EQ(rebuild(), outcome) << situation;
        service->takeCalls();
        prepare();
        EXPECT_EQ(service->takeCalls().empty(), isPreparedThen) << situation;
    };
    const auto notInTheList = serviceError(TranslationError::unsupportedTargetLanguage);
    check("ready", {Status::installed, true}, "ok", true);
    check("downloaded", {Status::supported, false}, "ok", true);
    check("still missing after the download", {Status::supported, false, false},
          "failed: languageResourcesNotReady", false);
    check("installed but never ready", {Status::installed, false, false}, "ok", false);
    check("download failed", {Status::supported, false, true, {1, serviceError(std::nullopt)}},
          "failed: unknown", false);
    check("no such language", {Status::supported, false, true, {0, notInTheList}},
          "failed: unsupportedTargetLanguage", false);
}

TEST_F(AppleTranslatorTests, EveryFailureOfTheServiceGetsItsCategory) {
    using Error = TranslationError;
    const std::pair<std::optional<Error>, Category> cases[] = {
        {Error::unsupportedSourceLanguage, Category::unsupportedSourceLanguage},
        {Error::unsupportedTargetLanguage, Category::unsupportedTargetLanguage},
        {Error::unsupportedLanguagePairing, Category::unsupportedLanguagePairing},
        {Error::notInstalled, Category::languageResourcesNotReady},
        {Error::alreadyCancelled, Category::sessionCancelled},
        {Error::unableToIdentifyLanguage, Category::unableToIdentifyLanguage},
        {Error::nothingToTranslate, Category::nothingToTranslate},
        {Error::internalError, Category::internalError},
        {std::nullopt, Category::unknown},
    };
    for (const auto& [kind, category] : cases) {
        const bool isCancelled = kind == Error::alreadyCancelled;
        Calls nextTime{"translate b"};
        if (isCancelled)
            nextTime = {"status en-US->fr-FR", "status en-US->fr-FR", "session en-US->fr-FR",
                        "isReady", "translate b"};
        if (kind == Error::notInstalled)
            nextTime = {"status en-US->fr-FR", "status en-US->fr-FR", "isReady", "translate b"};

        ASSERT_EQ(rebuild(), "ok");
        service->answers = {{0.1, serviceError(kind, "no")}};
        EXPECT_EQ(translate("a"), "failed: " + std::string(name(category)));
        service->takeCalls();
        EXPECT_EQ(translate("b"), "fr-FR:b");
        EXPECT_EQ(service->takeCalls(), nextTime) << name(category);

        // Missing files are the reported cause of every failure except a cancellation.
        service->answers = {{0.1, serviceError(kind, "no")}};
        host.after(0.05, [&] { service->pairs[pairName].isReady = false; });
        EXPECT_EQ(translate("a"),
                  isCancelled ? "failed: sessionCancelled" : "failed: languageResourcesNotReady");
        service->pairs[pairName].isReady = true;
    }
}

TEST_F(AppleTranslatorTests, ErrorsCarryTheDetailsOfTheService) {
    service->answers = {{0, serviceError(TranslationError::internalError, "no luck")}};
    try {
        await(host, translator.translate("a", "en", "fr"));
        FAIL() << "the service's failure must be thrown";
    } catch (const TranslatorError& error) {
        const TranslationFailureDetails expected{Category::internalError, "no luck", "Scripted", 7,
                                                 "because"};
        EXPECT_EQ(TranslatorError::detailsOf(error), expected);
        EXPECT_EQ(error.errorDescription(), "no luck");
    }
    const auto pair = TranslatorError::unsupportedPair("en", "fr");
    EXPECT_EQ(pair.errorDescription(), "不支持的翻译方向: en → fr");
    EXPECT_EQ(TranslatorError::detailsOf(std::runtime_error("odd")).category, Category::unknown);
    EXPECT_EQ(
        TranslatorError::detailsOf(std::make_exception_ptr(std::runtime_error("odd"))).message,
        "odd");
    EXPECT_EQ(TranslatorError::languageResourcesNotReady("en", "ja").details().message,
              TranslationSupport::languageResourceNotReadyMessage("ja"));
}

Task<std::string> messageOf(Task<std::string> task) {
    try {
        co_return co_await task;
    } catch (const TranslatorError& error) {
        co_return error.details().message;
    }
}

TEST_F(AppleTranslatorTests, ALoadThatFailsSaysWhyAndTheNextSentenceLoadsAgain) {
    for (const auto kind : {TranslationError::alreadyCancelled, TranslationError::internalError}) {
        AppleTranslator offline{host, service, Executor::main(host),
                                AppleTranslator::Downloads::never};
        service->pairs[pairName].load = {30, serviceError(kind, "gave no answer")};
        EXPECT_EQ(await(host, messageOf(offline.translate("a", "en", "fr"))), "gave no answer");
        service->pairs[pairName].load = {};
        EXPECT_EQ(await(host, messageOf(offline.translate("a", "en", "fr"))), "fr-FR:a");
    }
    EXPECT_EQ(std::ranges::count(service->calls, "prepare"), 0) << "a preparation would download";
}

TEST_F(AppleTranslatorTests, SentencesOfOnePairMayBeTranslatedConcurrently) {
    ASSERT_EQ(prepare(), "ok");
    service->takeCalls();
    service->answers = {{2, std::nullopt}, {1, std::nullopt}};
    std::optional<std::string> first, second;
    std::exception_ptr error;
    spawn(Executor::main(host),
          testing::detail::store(translator.translate("a", "en", "fr"), first, error));
    spawn(Executor::main(host),
          testing::detail::store(translator.translate("b", "en", "fr"), second, error));
    host.advanceBy(1.5);
    EXPECT_EQ(second, "fr-FR:b");
    EXPECT_EQ(first, std::nullopt);
    host.runUntilIdle();
    EXPECT_EQ(first, "fr-FR:a");
    EXPECT_EQ(service->takeCalls(), (Calls{"translate a", "translate b"})) << "no second session";
}

} // namespace
} // namespace tessarune
