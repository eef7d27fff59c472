// Tests the live recogniser with a scripted engine, in simulated time.

#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/speech-engine/SpeechEngineFactory.h"
#include "tests/platform/speech-engine/ScriptedEngine.h"
#include "tests/support/Await.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <optional>

using namespace tessarune;
using namespace tessarune::testing;

namespace {

const std::vector<ScriptedEngine::Spoken> threeLines{{"It was the best of times,", 1.0, 3.0},
                                                     {"it was the worst of times.", 3.2, 5.5},
                                                     {"So it goes.", 7.0, 8.0}};

class SpeechAnalyzerTest : public ::testing::Test {
  protected:
    static constexpr double batch = 0.085;

    SpeechAnalyzerTest() : store_(disk_, folder_ / "Models", {}) {
        const auto partial = store_.partialFolder(ModelKind::speech, "tiny-en");
        std::filesystem::create_directories(partial);
        std::ofstream(partial / "encoder.ort") << "weights";
        store_.adopt(ModelKind::speech, "tiny-en", {"encoder.ort"}, {{"architecture", "0"}});
        engine_.script = threeLines;
    }

    void TearDown() override {
        analyzer_.reset();
        host_.simulated.runUntilIdle();
        EXPECT_EQ(engine_.streamsOpen, 0u) << "a session that was dropped leaves nothing behind";
        EXPECT_NE(outcome_, "running");
    }

    void make(RecognitionPolicy policy = {}) {
        policy.processorSeconds = [this] { return engine_.processorSeconds; };
        const SpeechEngine engine = makeSpeechEngine(
            host_, store_, [this] { return choice_; }, [this] { return engine_.library(); },
            hearingAll(policy));
        const SpeechTranscriberOptions options{"en-US",
                                               {SpeechReportingOption::volatileResults},
                                               {SpeechAttributeOption::audioTimeRange}};
        unheardSeconds_ = engine.unheardSeconds;
        transcriber_ = engine.makeTranscriber(options, Executor::main(host_));
        analyzer_ = engine.makeAnalyzer(transcriber_);
        input_.emplace(analyzer_->inputExecutor());
        spawn(Executor::main(host_),
              noteOutcome(takeAll(transcriber_->results(), &results_), &outcome_));
    }

    /// Disables the high-pass filter, because the samples encode the time for the script.
    static RecognitionPolicy hearingAll(RecognitionPolicy policy) {
        policy.lowestHertz = 0;
        policy.removesHum = false; // the script's sounds repeat themselves, as hum does
        return policy;
    }

    void startUp(RecognitionPolicy policy = {}) {
        make(policy);
        EXPECT_EQ(run(analyzer_->prepareToAnalyze(analyzer_->bestAvailableAudioFormat())), "");
        EXPECT_EQ(run(analyzer_->start(*input_)), "");
    }

    /// Runs the task; returns the text of its exception, or an empty text.
    std::string run(Task<void> task) {
        std::string outcome;
        const TaskHandle handle =
            spawn(Executor::main(host_), noteOutcome(std::move(task), &outcome));
        while (!handle.isFinished() && host_.simulated.step()) {
        }
        return outcome == "done" ? "" : outcome;
    }

    /// Feeds the sound up to this time of the session, at real-time pace.
    void hearUntil(double seconds) {
        while (fed_ < seconds) {
            auto buffer = std::make_shared<AudioBuffer>();
            buffer->format = analyzer_->bestAvailableAudioFormat();
            for (int i = 0; i < static_cast<int>(batch * speechSampleRate); ++i)
                buffer->samples.push_back(soundAt(fed_ + i / 16000.0));
            fed_ += batch;
            input_->yield({buffer});
            // While the engine works, time passes and more sound arrives.
            const double due = startedAt_ + fed_;
            if (host_.now() < due)
                host_.simulated.advanceBy(due - host_.now());
        }
        host_.simulated.runDue(host_.simulated.now());
    }

    /// Feeds this much at once, then runs the recogniser.
    void hearAtOnce(double seconds) {
        const double until = fed_ + seconds;
        startedAt_ = host_.now() - until;
        hearUntil(until);
    }

    /// Loud while somebody speaks, except during rests.
    float soundAt(double time) const {
        const auto within = [time](const auto& span) {
            return span.start <= time && time < span.end;
        };
        const bool speaks = std::any_of(engine_.script.begin(), engine_.script.end(), within);
        const bool rests = std::any_of(rests_.begin(), rests_.end(), within);
        return ScriptedEngine::sound(time, speaks && !rests);
    }

    void hearAgainUntil(double seconds) {
        fed_ = 0;
        startedAt_ = host_.now();
        hearUntil(seconds);
    }

    std::vector<std::string> texts(bool finals) const {
        std::vector<std::string> found;
        for (const SpeechResult& result : results_) {
            if (result.isFinal == finals)
                found.push_back(result.text());
        }
        return found;
    }

    /// Transcribes 101 seconds of the script as a recording, in blocks of thirty seconds.
    static Task<void> transcribe(std::shared_ptr<SpeechFileAnalyzer> analyzer,
                                 std::vector<SpeechResult>* results) {
        Task<std::string> preparing = analyzer->prepare();
        co_await preparing;
        for (double at = 0; at < 101; at += 30) {
            auto block = std::make_shared<AudioBuffer>();
            block->format = analyzer->audioFormat();
            for (double time = at; time < std::min(at + 30, 101.0) - 1e-9; time += 1.0 / 16000)
                block->samples.push_back(ScriptedEngine::sound(time, true));
            Task<std::vector<SpeechResult>> analyzing = analyzer->analyze(block, {});
            const std::vector<SpeechResult> found = co_await analyzing;
            results->insert(results->end(), found.begin(), found.end());
        }
        Task<std::vector<SpeechResult>> finishing = analyzer->finish();
        const std::vector<SpeechResult> last = co_await finishing;
        results->insert(results->end(), last.begin(), last.end());
    }
    WorkingHost host_;
    double startedAt_ = host_.now();
    TemporaryFolder folder_;
    PosixFileSystem disk_;
    ModelStore store_;
    std::string choice_ = "automatic";
    ScriptedEngine engine_{host_};
    std::shared_ptr<SpeechTranscriber> transcriber_;
    std::shared_ptr<SpeechAnalyzer> analyzer_;
    std::optional<AsyncStream<AnalyzerInput>> input_;
    struct Rest {
        double start;
        double end;
    };
    std::vector<Rest> rests_;
    double fed_ = 0;
    std::function<double()> unheardSeconds_;
    std::vector<SpeechResult> results_;
    std::string outcome_; ///< of collecting the results
};

std::vector<std::string> textsOf(const std::vector<ScriptedEngine::Spoken>& script) {
    std::vector<std::string> all;
    for (const auto& line : script)
        all.push_back(line.text);
    return all;
}

} // namespace

TEST_F(SpeechAnalyzerTest, LinesBecomeFinalsAndTheDrainGivesTheRest) {
    startUp();
    hearUntil(2.6);
    EXPECT_TRUE(texts(true).empty());
    EXPECT_GE(texts(false).size(), 3u) << "words appear while they are spoken";
    hearUntil(7.7);
    EXPECT_EQ(texts(true).size(), 2u);
    EXPECT_EQ(outcome_, "running");
    input_->finish();
    EXPECT_EQ(run(analyzer_->finalizeAndFinishThroughEndOfInput()), "");
    EXPECT_EQ(outcome_, "done");
    ASSERT_EQ(texts(true).size(), 3u);
    EXPECT_EQ(texts(true).front(), threeLines.front().text);
    EXPECT_NEAR(engine_.heard, fed_, 0.01) << "every second must reach the engine";
    EXPECT_EQ(engine_.streamsOpen, 0u);
    EXPECT_EQ(engine_.modelsLoaded, 1u);
}

TEST_F(SpeechAnalyzerTest, SlowComputerUpdatesLessOftenAndKeepsUp) {
    for (const double cost : {0.0, 0.05, 0.3, 1.5}) {
        SCOPED_TRACE(::testing::Message() << cost << " s a pass");
        engine_.passes.clear();
        engine_.passCost = 0; // the warm-up is not measured
        startUp();
        engine_.passes.clear();
        engine_.passCost = cost;
        hearAgainUntil(12);
        ASSERT_GE(engine_.passes.size(), 3u);
        for (std::size_t i = 1; i < engine_.passes.size(); ++i) {
            const auto& [at, heard] = engine_.passes[i];
            EXPECT_GE(at - engine_.passes[i - 1].at, std::max(0.2, 2 * cost) - 1e-6);
            EXPECT_LE(at - engine_.passes[i - 1].at, std::max(0.2, 2 * cost) + 2 * batch);
            // At most two batches in transit and the sound of one pass are missing.
            EXPECT_GE(heard, at - startedAt_ - 2 * batch - cost);
        }
        run(analyzer_->cancelAndFinishNow());
    }
}

TEST_F(SpeechAnalyzerTest, TheLastSoundBeforeAPauseGetsOnePass) {
    startUp();
    hearUntil(1.9);
    const std::size_t before = engine_.passes.size();
    host_.simulated.advanceBy(1);
    ASSERT_EQ(engine_.passes.size(), before + 1) << "one pass, and no further ones";
    EXPECT_NEAR(engine_.passes.back().heard, fed_, 0.01);
}

TEST_F(SpeechAnalyzerTest, AComputerThatIsMuchTooSlowSkipsSoundInsteadOfFallingBehind) {
    engine_.script.clear();
    for (int i = 0; i < 30; ++i)
        engine_.script.push_back({"Line " + std::to_string(i) + ".", i * 2.0, i * 2.0 + 1.5});
    startUp({.longestBacklog = 4});
    hearUntil(1.2);
    EXPECT_TRUE(texts(true).empty());
    engine_.passCost = 6; // seconds; the recogniser waits as long after each pass
    hearUntil(59);
    EXPECT_GT(engine_.passes.back().heard, 45) << "it continues with the newest sound";
    EXPECT_LT(texts(true).size(), 25u);
    ASSERT_GE(results_.size(), 2u);
    const auto final = std::find_if(results_.begin(), results_.end(),
                                    [](const SpeechResult& result) { return result.isFinal; });
    ASSERT_TRUE(final != results_.begin() && final != results_.end());
    EXPECT_EQ(final->text(), std::prev(final)->text()) << "the shown words become the final";
    double before = -1;
    for (const SpeechResult& result : results_) {
        if (!result.isFinal)
            continue;
        const double start = result.runs.front().audioStart.value();
        EXPECT_GT(start, before);
        EXPECT_NEAR(start, std::stod(result.text().substr(5)) * 2, 0.1) << "skips count as time";
        before = start;
    }
}

TEST_F(SpeechAnalyzerTest, TimeInWhichTheProcessDidNotRunDoesNotDelayTheNextPass) {
    startUp();
    hearUntil(2.5);
    engine_.stoppedInPass = 12;
    hearUntil(3);
    ASSERT_EQ(engine_.stoppedInPass, 0);
    const double woke = host_.now();
    engine_.passes.clear();
    hearAtOnce(0.5); // sound that was waiting in the server
    hearUntil(fed_ + 1);
    ASSERT_GE(engine_.passes.size(), 3u);
    EXPECT_LE(engine_.passes.front().at - woke, 0.2 + 2 * batch);
}

TEST_F(SpeechAnalyzerTest, SoundFasterThanRealTimeIsNotDelayedAndGivesNoSpeedOfTheModel) {
    const auto speeds = store_.folder(ModelKind::speech, "speeds.json");
    engine_.script = {{"On and on it goes.", 0, 1000}};
    startUp();
    engine_.passCost = 3; // too slow for a live model
    for (std::size_t i = 1; i <= 60; ++i) {
        hearAtOnce(5);
        ASSERT_EQ(unheardSeconds_(), 0) << "all sound is recognised without a wait";
    }
    TearDown();
    EXPECT_FALSE(std::filesystem::exists(speeds));

    engine_.passCost = 0.05;
    startUp();
    hearAgainUntil(30);
    TearDown();
    EXPECT_TRUE(std::filesystem::exists(speeds)) << "live sound gives the speed of the model";
}

TEST_F(SpeechAnalyzerTest, ALineIsClosedWhereItsSoundStopsAndAnotherFollows) {
    for (const double cost : {0.0, 1.5}) {
        SCOPED_TRACE(::testing::Message() << cost << " s a pass");
        engine_.script = {{"Ever tried.", 1, 4}, {"Fail better.", 4.5, 6}};
        results_.clear();
        engine_.passCost = 0;
        startUp();
        engine_.passCost = cost;
        hearAgainUntil(3);
        host_.simulated.advanceBy(1.5);
        EXPECT_TRUE(texts(true).empty()) << "a short pause does not close the line";
        host_.simulated.advanceBy(8);
        ASSERT_EQ(texts(true).size(), 1u) << "a long pause closes the line";
        const std::size_t passes = engine_.passes.size();
        host_.simulated.advanceBy(60);
        EXPECT_EQ(engine_.passes.size(), passes);
        startedAt_ = host_.now() - fed_;
        hearUntil(9);
        host_.simulated.advanceBy(5);
        ASSERT_GE(texts(true).size(), 2u);
        EXPECT_EQ(texts(true).back(), "Fail better.");
        EXPECT_NEAR(results_.back().runs.front().audioStart.value(), 4.5, 0.1);
        TearDown();
    }
}

TEST_F(SpeechAnalyzerTest, OldLinesAreDroppedBetweenTwoLinesAndTimesContinue) {
    startUp(RecognitionPolicy{.linesBeforeRestart = 2});
    hearUntil(2);
    run(analyzer_->cancelAnalysis(0.5));
    EXPECT_EQ(engine_.streamsMade, 2u) << "one for the trial of the model and one for the session";
    hearUntil(7.3); // the third line has begun, and the engine does not show it yet
    run(analyzer_->cancelAnalysis(5));
    EXPECT_EQ(engine_.streamsMade, 3u);
    EXPECT_EQ(engine_.streamsOpen, 1u);
    hearUntil(9);
    EXPECT_EQ(texts(true), textsOf(threeLines));
    EXPECT_NEAR(results_.back().runs.front().audioStart.value(), 7.0, 0.01);
    EXPECT_NEAR(results_.back().runs.back().audioEnd.value(), 8.0, 0.01);
}

TEST_F(SpeechAnalyzerTest, FinalizeClosesALongLineAtARestIfThereIsOneSoon) {
    struct Case {
        const char* name;
        double lineStart;
        Rest rest;
        double through;
        std::vector<std::string> finalsAt9; ///< before the engine itself closes the line
    };
    const std::vector<Case> cases{{"a rest", 1, {8.5, 8.65}, 7.6, {"Ever tried."}},
                                  {"too short a rest", 1, {8.5, 8.53}, 7.6, {}},
                                  {"too late a rest", 1, {9.2, 9.4}, 7.6, {}},
                                  {"a line that began later", 1, {8.5, 8.65}, 0.9, {}},
                                  {"a short line", 4, {8.5, 8.65}, 7.6, {}}};
    for (const auto& [name, lineStart, rest, through, finalsAt9] : cases) {
        SCOPED_TRACE(name);
        engine_.script = {{"Ever tried.", lineStart, 8.5}, {"Ever failed.", 8.5, 11}};
        engine_.completionLag = 1.5;
        rests_ = {rest};
        results_.clear();
        startUp();
        hearAgainUntil(8.05);
        std::string deciding;
        spawn(Executor::main(host_), noteOutcome(analyzer_->finalize(through), &deciding));
        hearUntil(9.1);
        EXPECT_EQ(texts(true), finalsAt9);
        EXPECT_EQ(deciding, "done") << "finalize waits at most a second";
        hearUntil(13);
        EXPECT_EQ(texts(true), textsOf(engine_.script)) << "each line comes once";
        EXPECT_NEAR(results_.back().runs.front().audioStart.value(), 8.5, 0.01);
        TearDown();
    }
}

TEST_F(SpeechAnalyzerTest, AbortEndsTheResultsAtOnce) {
    startUp();
    hearUntil(4);
    const std::size_t before = results_.size();
    run(analyzer_->cancelAndFinishNow());
    EXPECT_EQ(outcome_, "done");
    hearUntil(6);
    EXPECT_EQ(results_.size(), before);
    EXPECT_EQ(engine_.streamsOpen, 0u);
    // A drain after the abort ends, too.
    EXPECT_EQ(run(analyzer_->finalizeAndFinishThroughEndOfInput()), "");
}

TEST_F(SpeechAnalyzerTest, FailuresAreReportedWhereTheyHappen) {
    struct Case {
        const char* call;
        const char* prepare; // `prepare`, `start`, `results`: the failure of this step; empty: none
        const char* start;
        const char* results;
    };
    for (const auto& [call, prepare, start, results] :
         {Case{"load", "The speech model tiny-en cannot be loaded: out of order", "", ""},
          Case{"start", "", "The speech engine does not start: out of order", ""},
          Case{"add", "", "", "The speech engine does not accept sound: out of order"},
          Case{"transcribe", "", "", "The speech engine failed: out of order"}}) {
        SCOPED_TRACE(call);
        make();
        if (*prepare != '\0')
            engine_.failing = call;
        EXPECT_EQ(run(analyzer_->prepareToAnalyze({speechSampleRate, 1})), prepare);
        if (*prepare == '\0') {
            if (*start != '\0')
                engine_.failing = call;
            EXPECT_EQ(run(analyzer_->start(*input_)), start);
        }
        if (*results != '\0') {
            engine_.failing = call;
            hearAgainUntil(2);
            EXPECT_EQ(outcome_, results);
            input_->finish();
            EXPECT_EQ(run(analyzer_->finalizeAndFinishThroughEndOfInput()), "");
        }
        engine_.failing.clear();
        TearDown();
    }
}

TEST_F(SpeechAnalyzerTest, MissingAndDamagedFilesAreNamed) {
    make();
    choice_ = "medium-streaming-en";
    EXPECT_EQ(run(analyzer_->prepareToAnalyze({speechSampleRate, 1})),
              "The speech model medium-streaming-en is not on this computer.");
    choice_ = "automatic";
    const auto file = store_.folder(ModelKind::speech, "tiny-en") / "encoder.ort";
    std::ofstream(file) << "wEights"; // the same length as before
    EXPECT_NE(run(analyzer_->prepareToAnalyze({speechSampleRate, 1})).find(file.string()),
              std::string::npos);
    EXPECT_EQ(engine_.modelsLoaded, 0u) << "the damage is found before the model is loaded";

    const TemporaryFolder empty;
    try {
        MoonshineLibrary::open({empty.path()});
        FAIL() << "there is no library";
    } catch (const std::runtime_error& failure) {
        EXPECT_NE(std::string(failure.what()).find(empty.path().string()), std::string::npos);
    }
    std::ofstream(empty / "libmoonshine.so") << "no library";
    EXPECT_THROW(MoonshineLibrary::open({empty.path()}), std::runtime_error);
}

TEST_F(SpeechAnalyzerTest, AutomaticChoosesTheLargestIntactModelThatIsFastEnough) {
    for (const char* name : {"small-streaming-en", "medium-streaming-en"}) {
        const auto partial = store_.partialFolder(ModelKind::speech, name);
        std::filesystem::create_directories(partial);
        std::ofstream(partial / "encoder.ort") << "weights";
        store_.adopt(ModelKind::speech, name, {"encoder.ort"}, {{"architecture", "4"}});
    }
    SpeechModels models(
        host_, store_, [this] { return choice_; }, [this] { return engine_.library(); }, 0.1,
        4'000'000'000);
    EXPECT_EQ(models.choose().name, "medium-streaming-en");
    EXPECT_EQ(models.loadForFiles("automatic")->name(), "small-streaming-en") << "fits into 4 GB";
    EXPECT_EQ(models.loadForFiles("medium-streaming-en")->name(), "medium-streaming-en");
    models.speeds().observe("medium-streaming-en", 0.2, 10);
    EXPECT_EQ(models.choose().name, "medium-streaming-en") << "ten passes prove nothing";
    models.speeds().observe("medium-streaming-en", 0.2, 100);
    EXPECT_EQ(models.choose().name, "small-streaming-en");
    std::filesystem::remove(store_.folder(ModelKind::speech, "small-streaming-en") / "encoder.ort");
    EXPECT_EQ(models.choose().name, "tiny-en");
    choice_ = "medium-streaming-en";
    EXPECT_EQ(models.choose().name, "medium-streaming-en") << "the user's choice holds";
    choice_ = "automatic";
    host_.worked += 31.0 * 24 * 3600;
    EXPECT_EQ(models.choose().name, "medium-streaming-en") << "tried again after a month";
}

TEST_F(SpeechAnalyzerTest, ARecordingGivesEachLineOnceHoweverOftenItsStreamIsReplaced) {
    engine_.script.clear();
    for (int i = 0; i < 40; ++i)
        engine_.script.push_back({"This is line " + std::to_string(i) + ".", i * 2.5, i * 2.5 + 2});
    for (const std::size_t linesBeforeRestart : {1U, 3U, 300U}) {
        engine_.heard = 0;
        RecognitionPolicy policy;
        policy.linesBeforeRestart = linesBeforeRestart;
        const SpeechEngine engine = makeSpeechEngine(
            host_, store_, {}, [this] { return engine_.library(); }, hearingAll(policy));
        const auto analyzer = engine.makeFileAnalyzer(
            {"en-US", {}, {SpeechAttributeOption::audioTimeRange}}, "automatic");
        std::vector<SpeechResult> results;
        EXPECT_EQ(run(transcribe(analyzer, &results)), "");
        ASSERT_EQ(results.size(), 40U) << linesBeforeRestart << " lines before a restart";
        for (std::size_t i = 0; i < results.size(); ++i) {
            EXPECT_EQ(results[i].text(), engine_.script[i].text);
            EXPECT_NEAR(*results[i].runs.front().audioStart, engine_.script[i].start, 0.05);
        }
        EXPECT_EQ(results.front().isFinal, true);
    }
    EXPECT_GT(engine_.streamsMade, 30U) << "streams are replaced";
    engine_.failing = "transcribe";
    const SpeechEngine engine = makeSpeechEngine(
        host_, store_, {}, [this] { return engine_.library(); }, hearingAll({}));
    std::vector<SpeechResult> unused;
    EXPECT_NE(run(transcribe(engine.makeFileAnalyzer({}, "automatic"), &unused)), "");
    EXPECT_NE(run(transcribe(engine.makeFileAnalyzer({}, "no-such-model"), &unused)), "");
}
