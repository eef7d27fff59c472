#include "TessaruneCore/translation/TranslationSupport.h"
#include "tests/simulation/TranslatedLiveSession.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using simulation::TranslatedLiveSession;
using Answer = testing::ScriptedTranslationService::Answer;
using Availability = TranslationAvailabilityStatus;
using Strings = std::vector<std::string>;

TEST(LiveSessionTranslationTests, ASessionIsTranslatedPreviewedAndSavedInBothLanguages) {
    TranslatedLiveSession session;
    session.begin();
    const auto& frame = session.store->view().captionDisplay.frame;
    session.say(false, "One is said. And then");
    EXPECT_EQ(frame->ghostTranslationText, "fr-FR:One is said.");
    EXPECT_EQ(frame->ghostTranslationSourceText, "One is said.");
    session.say(true, "One is said.");
    EXPECT_EQ(frame->ghostTranslationText, "") << "a translated row needs no preview";
    EXPECT_FALSE(frame->translationStatus.canRetryIncomplete);
    session.say(true, "Two has no end");
    EXPECT_TRUE(frame->translationStatus.canRetryIncomplete);
    EXPECT_EQ(session.shown(), (Strings{"fr-FR:One is said.", "?"}));
    const auto usersOfService = session.service.use_count();
    const UUID id = session.recordingID();
    session.stop();
    session.host.advanceBy(20);
    EXPECT_EQ(session.bilingual(id), "One is said.\nfr-FR:One is said.\n\n"
                                     "Two has no end\nfr-FR:Two has no end");
    EXPECT_EQ(session.translationStatus(), "");
    EXPECT_LT(session.service.use_count(), usersOfService) << "the session released the service";
}

TEST(LiveSessionTranslationTests, MissingLanguageFilesAreReportedAndNeverDownloaded) {
    TranslatedLiveSession session;
    session.service->pairs["en-US->fr-FR"] = {Availability::supported, false, true, {}};
    session.begin();
    session.say(true, "One is said.");
    EXPECT_TRUE(session.store->view().translation.translationPreparationDisplayState->preparing);
    session.host.advanceBy(5);
    EXPECT_FALSE(session.store->view().translation.translationPreparationDisplayState->preparing);
    EXPECT_EQ(session.translationStatus(),
              TranslationSupport::languageResourceNotReadyMessage("fr"));
    // The user installs the languages elsewhere, and the session notices.
    session.service->pairs["en-US->fr-FR"] = {};
    session.say(true, "Two is said.");
    session.host.advanceBy(2);
    EXPECT_EQ(session.shown(), (Strings{"fr-FR:One is said.", "fr-FR:Two is said."}));
    EXPECT_EQ(session.translationStatus(), "");
    for (const std::string& call : session.service->calls)
        EXPECT_NE(call, "prepare") << "a preparation would download the language files";
}

TEST(LiveSessionTranslationTests, AStopDuringTheStartLeavesNoTranslationStatus) {
    TranslatedLiveSession session;
    session.launch();
    session.store->startListening(LiveSessionControlTrigger::programmatic());
    EXPECT_NE(session.translationStatus(), "");
    session.store->stopListening(LiveSessionControlTrigger::programmatic());
    session.host.advanceBy(20);
    EXPECT_EQ(session.translationStatus(), "");
}

TEST(LiveSessionTranslationTests, ACrashKeepsTranslationsOfTheLastTargetOnly) {
    TranslatedLiveSession session;
    session.begin();
    session.say(true, "One is said.");
    session.say(true, "Two is said.");
    session.host.advanceBy(1);
    const UUID id = session.recordingID();
    session.service->answer = [](const std::string& text) {
        return Answer{text == "Two is said." ? 1e5 : 0, std::nullopt};
    };
    session.settings.translationTargetLanguage = "de"; // another program may do this
    session.host.advanceBy(1);
    session.crash();
    EXPECT_EQ(session.bilingual(id), "One is said.\nde-DE:One is said.\n\nTwo is said.");
}

} // namespace
} // namespace tessarune
