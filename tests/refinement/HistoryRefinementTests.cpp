#include "Tessarune/history/RecordingRepair.h"
#include "tests/refinement/RefinedRecording.h"

#include <gtest/gtest.h>

using namespace tessarune;
using namespace tessarune::testing;
using simulation::spoken;
using Status = HistoryRefinementOutcome::Status;

namespace {

const std::string formerText = "Old words.";
const std::string refinedText = "New words.\nAnd more.";

} // namespace

TEST(HistoryRefinementTests, TheTextIsSavedBeforeItsTranslation) {
    RefinedRecording recording;
    std::vector<std::string> updates;
    const auto observation = recording.notifications.observe(
        NotificationName::recordingTranscriptDidUpdate,
        [&](const auto&) { updates.push_back(recording.text() + "|" + recording.bilingual()); });
    recording.refine();
    EXPECT_EQ(recording.outcome->status, Status::finished);
    EXPECT_EQ(updates,
              (std::vector<std::string>{
                  refinedText + "|Old words.\nAlte Worte.",
                  refinedText + "|New words.\nde-DE:New words.\n\nAnd more.\nde-DE:And more."}));
    EXPECT_EQ(recording.blocks, std::vector<double>(12, 5));
    EXPECT_EQ(recording.events("history.refine.source.done").size(), 1U);
    EXPECT_TRUE(recording.service->jobs()->empty());
}

TEST(HistoryRefinementTests, WithoutACompleteTranslationTheFormerOneStays) {
    for (const auto& [target, fails] :
         std::vector<std::pair<std::string, bool>>{{"en-US", false}, {"de-DE", true}}) {
        RefinedRecording recording;
        recording.target = target;
        recording.translation->answer = [](const std::string& text) {
            ScriptedTranslationService::Answer answer;
            if (text == "And more.")
                answer.error = serviceError(TranslationError::internalError);
            return answer;
        };
        recording.refine();
        EXPECT_EQ(recording.text(), refinedText);
        EXPECT_EQ(recording.bilingual(), "Old words.\nAlte Worte.");
        EXPECT_EQ(recording.outcome->translation == HistoryRefinementOutcome::Translation::failed,
                  fails)
            << target;
    }
}

// A recogniser may report its first word too late, so the word is moved back to the first loud
// sound. If the recogniser is never late, the sound before the word was music.
TEST(HistoryRefinementTests, TimesCountFromTheStartOfTheRecording) {
    struct Case {
        double firstWord, loudFrom, mostLateness, expected;
    };
    for (const Case& each : {Case{3.2, 1.0, 1000, 1.0}, Case{3.2, 5.0, 1000, 3.2},
                             Case{3.2, 1.0, 0, 3.2}, Case{3.2, 100, 1000, 0.0}}) {
        RefinedRecording recording;
        recording.catalog.saveWordTimeline(std::nullopt, recording.id);
        recording.loudFrom = each.loudFrom;
        recording.mostLateness = each.mostLateness;
        recording.heard = {spoken(true, "New words.", each.firstWord)};
        recording.refine();
        const HistoryWordTimeline timeline = recording.timeline();
        ASSERT_EQ(timeline.words.size(), 2U);
        EXPECT_NEAR(timeline.words.front().t, each.expected, 1e-9) << each.loudFrom;
        EXPECT_NEAR(timeline.sentences.front().start, each.expected, 1e-9);
        EXPECT_NEAR(timeline.sentences.front().end, each.expected + 0.5, 1e-9);
        EXPECT_EQ(timeline.timingKind, "audioWord");
    }
}

TEST(HistoryRefinementTests, ResultsBecomeSentencesWithoutRepetition) {
    struct Case {
        std::vector<SpeechResult> heard;
        std::string text;
    };
    SpeechResult untimed = spoken(true, "Nobody knows when.");
    for (SpeechRun& run : untimed.runs)
        run.audioStart.reset();
    std::string longRunOn;
    for (int i = 0; i < 40; ++i)
        longRunOn += "word" + std::to_string(i) + (i == 27 ? "\n" : i == 39 ? "" : " ");
    std::string asHeard = longRunOn;
    std::ranges::replace(asHeard, '\n', ' ');
    const std::vector<Case> cases{
        {{spoken(true, "It is. It was.", 1), spoken(true, "it WAS", 4)}, "It is.\nIt was."},
        {{spoken(false, "First guess.", 1), spoken(false, "Second guess.", 1)}, "Second guess."},
        {{spoken(false, "A guess.", 1), spoken(true, "A final.", 1)}, "A final."},
        {{spoken(true, "Known.", 1), untimed, spoken(true, " … ", 9)}, "Known."},
        {{spoken(true, asHeard, 1)}, longRunOn}};
    for (const Case& each : cases) {
        RefinedRecording recording;
        recording.heard = each.heard;
        recording.refine();
        EXPECT_EQ(recording.text(), each.text);
    }
}

TEST(HistoryRefinementTests, ASentenceStaysWhereTheRecogniserHasNothing) {
    RefinedRecording recording;
    HistoryWordTimeline former;
    const UUID row = UUID::random();
    former.sentences = {{"New words!", 0.9, 1.4, std::nullopt, "audioWord"}, // heard again
                        {"Only live.", 20, 22, row, "audioWord"},
                        {"And more", 2.6, 3.0, std::nullopt, "audioWord"},       // a little late
                        {"Another guess.", 1.5, 2.0, std::nullopt, "audioWord"}, // corrected
                        {"A guess.", 1.2, 1.2, std::nullopt, "audioWord"},
                        {"It ends nowhere.", 30, 30, std::nullopt, "asrSegment"}};
    former.words = {{"Only", 20, row}, {"live.", 21, row}};
    recording.catalog.saveWordTimeline(former, recording.id);
    recording.refine();
    EXPECT_EQ(recording.text(), refinedText + "\nOnly live.\nIt ends nowhere.");
    EXPECT_EQ(recording.outcome->keptOfFormer, 2);
    const HistoryWordTimeline timeline = recording.timeline();
    EXPECT_EQ(timeline.sentences.at(2).start, 20);
    EXPECT_EQ(timeline.words.back().t, 21);
    EXPECT_NE(recording.bilingual().find("Only live.\nde-DE:Only live."), std::string::npos);
}

// Each case fails before the refined text is complete.
TEST(HistoryRefinementTests, AFailureLeavesTheFormerTranscriptUnchanged) {
    struct Case {
        const char* what;
        Status status;
        std::function<void(RefinedRecording&)> arrange;
    };
    const std::vector<Case> cases{
        {"nothing is understood", Status::failed, [](auto& r) { r.heard.clear(); }},
        {"the recogniser fails", Status::failed,
         [](auto& r) {
             r.failure = "out of order";
             r.failingBlock = 2;
         }},
        {"the file is damaged in the middle", Status::failed, [](auto& r) { r.damagedAt = 40; }},
        {"the file cannot be read", Status::failed, [](auto& r) { r.damagedAt = 0; }},
        {"the sound cannot be converted", Status::failed,
         [](auto& r) { r.onBlock = [] { throw AudioConversionError("out of range"); }; }},
        {"the file is shorter than the recording", Status::failed,
         [](auto& r) { r.setDuration(65); }},
        {"a former sentence begins after the end of the file", Status::failed,
         [](auto& r) {
             HistoryWordTimeline former;
             former.sentences = {{"Old words.", 64, 65, std::nullopt, "audioWord"}};
             r.catalog.saveWordTimeline(former, r.id);
         }},
        {"an import is damaged, and its times are lost", Status::failed,
         [](auto& r) {
             r.catalog.saveWordTimeline(std::nullopt, r.id);
             RecordingMetadata import = *r.catalog.recording(r.id);
             import.audioFormat = "mp3";
             r.catalog.upsert(import);
             r.damagedAt = 40;
         }},
        {"the former transcript cannot be read", Status::failed,
         [](auto& r) {
             r.disk.onOperation = [](const std::string& operation, const auto& path) {
                 if (operation == "read" && path.extension() == ".txt")
                     throw std::system_error(std::make_error_code(std::errc::io_error));
             };
         }},
        {"the disk is full", Status::failed,
         [](auto& r) { r.onBlock = [&r] { r.disk.capacity = 0; }; }},
        {"another program writes the data folder", Status::failed,
         [](auto& r) { r.holder = "another program"; }},
        {"the refinement is cancelled", Status::cancelled,
         [](auto& r) { r.onBlock = [&r] { spawn(Executor::main(r.host), r.service->end()); }; }},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        RefinedRecording recording;
        each.arrange(recording);
        const HistoryWordTimeline former = recording.timeline();
        recording.refine();
        ASSERT_TRUE(recording.outcome);
        EXPECT_EQ(recording.outcome->status, each.status);
        EXPECT_EQ(recording.outcome->failure == HistoryRefinementOutcome::Failure::recogniser,
                  std::string_view(each.what) == "the recogniser fails");
        EXPECT_EQ(recording.finalSegments,
                  std::string_view(each.what) == "the disk is full" ? 2 : 0);
        EXPECT_EQ(recording.outcome->problem.empty(), each.status == Status::cancelled);
        EXPECT_EQ(recording.service->failures()->empty(), each.status == Status::cancelled);
        EXPECT_EQ(recording.text(), formerText);
        EXPECT_EQ(recording.timeline(), former);
    }
}

// A recording without a transcript, such as an import, gets the part that could be transcribed.
TEST(HistoryRefinementTests, WithoutAFormerTranscriptDamageCostsOnlyWhatFollowsIt) {
    RefinedRecording recording;
    recording.catalog.saveTranscript("", recording.id);
    recording.damagedAt = 40;
    recording.refine();
    EXPECT_EQ(recording.text(), refinedText);
    EXPECT_EQ(recording.outcome->heardSeconds, 40);
    EXPECT_EQ(recording.outcome->brokenOff, "talk.wav is damaged");
}

// Text and times always match, at the latest after the next start. The refined text keeps the
// former sentence, because nothing was heard at its time.
TEST(HistoryRefinementTests, ADiskFailureLeavesOneCompleteText) {
    enum class Fault { once, onceAndLate, permanent };
    for (const Fault fault : {Fault::once, Fault::onceAndLate, Fault::permanent}) {
        for (std::uint64_t operation = 1;; ++operation) {
            SCOPED_TRACE("operation " + std::to_string(operation));
            RefinedRecording recording;
            recording.disk.failsLate = fault == Fault::onceAndLate;
            HistoryWordTimeline former;
            former.sentences = {{formerText, 40, 42, std::nullopt, "audioWord"}};
            recording.catalog.saveWordTimeline(former, recording.id);
            former = recording.timeline();
            const std::string merged = refinedText + "\n" + formerText;
            const std::uint64_t before = recording.disk.operations;
            (fault == Fault::permanent ? recording.disk.failFrom : recording.disk.failAt) =
                before + operation;
            recording.refine();
            const bool wasReached = recording.disk.operations >= before + operation;
            recording.disk.recover();
            ASSERT_TRUE(recording.outcome);
            if (recording.outcome->status == Status::finished)
                EXPECT_EQ(recording.text(), merged);
            EXPECT_NE(recording.outcome->status, Status::deleted);
            RecordingRepair(recording.disk, recording.catalog, recording.logger).runAtLaunch();
            const std::string text = recording.text();
            EXPECT_TRUE(text == formerText || text == merged) << text;
            EXPECT_EQ(recording.timeline() == former, text == formerText);
            EXPECT_EQ(recording.timeline().sentences.size(), text == formerText ? 1U : 3U);
            for (const auto& name : recording.disk.list(recording.paths.transcripts()))
                EXPECT_FALSE(name.ends_with(RecordingCatalog::replacementSuffix)) << name;
            if (!wasReached)
                break;
        }
    }
}

// Deleted before, between and after the two saves, while another request is pending.
TEST(HistoryRefinementTests, ADeletedRecordingStaysDeleted) {
    for (const double after : {0.0, 0.5, 1.5, 2.5, 3.5}) {
        SCOPED_TRACE(::testing::Message() << "deleted after " << after << " s");
        RefinedRecording recording;
        recording.translation->answer = [](const std::string&) {
            return ScriptedTranslationService::Answer{1, {}};
        };
        recording.begin();
        recording.begin();
        recording.host.advanceBy(after);
        recording.catalog.deleteRecording(recording.id);
        recording.host.runUntilIdle(recording.host.now() + 100);
        ASSERT_TRUE(recording.outcome);
        EXPECT_EQ(recording.outcome->status, Status::deleted);
        EXPECT_TRUE(recording.disk.list(recording.paths.transcripts()).empty());
        EXPECT_TRUE(recording.events("history.refine.failed").empty());
    }
}

TEST(HistoryRefinementTests, ARefinementPausesWhileASessionListens) {
    RefinedRecording recording;
    int other = 0; // stands for another session that listens
    recording.onBlock = [&] {
        recording.service->setPaused(&recording, true);
        recording.service->setPaused(&other, true);
        recording.service->setPaused(&other, false);
    };
    recording.begin();
    recording.host.advanceBy(600);
    EXPECT_EQ(recording.blocks.size(), 1U) << "only the block in progress is completed";
    EXPECT_TRUE(recording.service->jobs()->at(recording.id).isPaused);
    recording.onBlock = [] {};
    recording.service->setPaused(&recording, false);
    recording.host.advanceBy(10);
    EXPECT_EQ(recording.text(), refinedText);
    recording.service->setPaused(&recording, true);
    recording.begin();
    recording.host.advanceBy(600);
    EXPECT_EQ(recording.loadedModels, 1) << "no model is loaded while a session listens";
}

TEST(HistoryRefinementTests, RequestsRunOneByOneAndOnlyTheLatestPendingOneOfARecording) {
    RefinedRecording recording;
    recording.begin();
    recording.host.advanceBy(0.5);
    HistoryRefinementRequest later = recording.request();
    recording.service->schedule(later);
    later.translationTargetLanguage = "fr-FR";
    recording.service->schedule(later);
    recording.service->schedule(std::nullopt);
    HistoryRefinementRequest other = recording.request();
    other.recordingID = UUID::random();
    recording.service->schedule(other);
    recording.service->cancel(other.recordingID);
    recording.host.runUntilIdle(recording.host.now() + 100);
    EXPECT_EQ(recording.blocks.size(), 24U); // of two refinements
    EXPECT_EQ(recording.bilingual(), "New words.\nfr-FR:New words.\n\nAnd more.\nfr-FR:And more.");
    EXPECT_TRUE(recording.service->jobs()->empty());
    recording.service->schedule(later);
    for (const bool isQueued : {true, false}) { // false: requested after `end`
        recording.begin();
        if (isQueued)
            spawn(Executor::main(recording.host), recording.service->end());
        recording.host.advanceBy(10);
        ASSERT_TRUE(recording.outcome);
        EXPECT_EQ(recording.outcome->status, Status::cancelled);
    }
}
