// The real engine with the bundled model, on the shipped recordings.

#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/media/SwresampleConverter.h"
#include "Tessarune/platform/model-store/Checksums.h"
#include "Tessarune/platform/model-store/ProgramPlaces.h"
#include "Tessarune/platform/speech-engine/SpeechEngineFactory.h"
#include "Tessarune/platform/speech-engine/SpeechModelInventory.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/support/Await.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WordErrorRate.h"

#include <gtest/gtest.h>

#include <iostream>
#include <memory>

using namespace tessarune;
using namespace tessarune::testing;

namespace {

constexpr double batchSeconds = 0.085;

std::string referenceOf(const std::string& name) {
    return contentsOf(std::string(TESSARUNE_TEST_DATA) + "/speech/" + name + ".txt");
}

/// A session in virtual time, which drives the engine as if live but as fast as possible.
class LiveRun {
  public:
    explicit LiveRun(RecognitionPolicy policy = {})
        : store_(disk_, folder_ / "Models", ProgramPlaces::modelFolders()) {
        engine_ = makeSpeechEngine(
            host_, store_, [] { return std::string("tiny-en"); }, &MoonshineLibrary::shared,
            policy);
        SpeechTranscriberOptions options{"en-US",
                                         {SpeechReportingOption::volatileResults},
                                         {SpeechAttributeOption::audioTimeRange}};
        transcriber_ = engine_.makeTranscriber(options, Executor::main(host_));
        analyzer_ = engine_.makeAnalyzer(transcriber_);
    }

    /// Feeds the recording like a sound server, and lets old lines be dropped continually.
    void hear(const AudioBuffer& recording) {
        AsyncStream<AnalyzerInput> input(analyzer_->inputExecutor());
        run(analyzer_->prepareToAnalyze(analyzer_->bestAvailableAudioFormat()));
        run(analyzer_->start(input));
        spawn(Executor::main(host_),
              noteOutcome(takeAll(transcriber_->results(), &results), &outcome));
        const auto batch = static_cast<std::size_t>(batchSeconds * recording.format.sampleRate);
        for (std::size_t at = 0; at < recording.frames(); at += batch) {
            const float* const from = recording.samples.data() + at;
            const std::vector<float> samples(from, from + std::min(batch, recording.frames() - at));
            input.yield({std::make_shared<AudioBuffer>(AudioBuffer{recording.format, samples})});
            host_.advanceBy(batchSeconds);
            run(analyzer_->cancelAnalysis(0));
        }
        input.finish();
        run(analyzer_->finalizeAndFinishThroughEndOfInput());
        ASSERT_EQ(outcome, "done");
    }

    /// The text of the same recording in file mode.
    std::string fileText(const AudioBuffer& recording) {
        const auto analyzer = engine_.makeFileAnalyzer({"en-US", {}, {}}, "tiny-en");
        std::string text;
        run(transcribe(analyzer, std::make_shared<AudioBuffer>(recording), &text));
        return text;
    }

    std::string finalText() const {
        std::string text;
        for (const SpeechResult& result : results) {
            if (result.isFinal)
                text += result.text() + " ";
        }
        return text;
    }

    std::vector<SpeechResult> results;
    std::string outcome;

  private:
    static Task<void> transcribe(std::shared_ptr<SpeechFileAnalyzer> analyzer, AudioBufferPtr sound,
                                 std::string* text) {
        Task<std::string> preparing = analyzer->prepare();
        co_await preparing;
        for (const bool isLast : {false, true}) {
            Task<std::vector<SpeechResult>> working =
                isLast ? analyzer->finish() : analyzer->analyze(sound, {});
            const std::vector<SpeechResult> found = co_await working;
            for (const SpeechResult& result : found)
                *text += result.text() + " ";
        }
    }
    void run(Task<void> task) {
        const TaskHandle handle = spawn(Executor::main(host_), std::move(task));
        while (!handle.isFinished() && host_.step()) {
        }
        host_.runDue(host_.now());
    }

    SimulatedHost host_{1'000'000};
    TemporaryFolder folder_;
    PosixFileSystem disk_;
    ModelStore store_;
    SpeechEngine engine_;
    std::shared_ptr<SpeechTranscriber> transcriber_;
    std::shared_ptr<SpeechAnalyzer> analyzer_;
};

std::string batchText(const AudioBuffer& recording) {
    PosixFileSystem disk;
    const ModelStore store(disk, "/nonexistent", ProgramPlaces::modelFolders());
    MoonshineModel model(MoonshineLibrary::shared(),
                         store.find(ModelKind::speech, SpeechModels::smallest).value(),
                         MoonshineModel::Use{0.1});
    const moonshine::Transcript& transcript = model.transcribe(recording.samples, speechSampleRate);
    std::string text;
    for (std::size_t i = 0; i < transcript.lineCount; ++i)
        text += std::string(transcript.lines[i].text) + " ";
    return text;
}

/// A shipped recording in the engine's format.
AudioBuffer sample(const std::string& name) {
    const auto file =
        openFFmpegMediaFile(ProgramPlaces::sampleSpeech().parent_path() / (name + ".wav"));
    const auto converter = makeSwresampleConverter(file->format(), {speechSampleRate, 1});
    AudioBuffer all{converter->outputFormat(), {}};
    const auto add = [&](const AudioBuffer& more) {
        all.samples.insert(all.samples.end(), more.samples.begin(), more.samples.end());
    };
    while (const AudioBufferPtr block = file->read())
        add(converter->convert(*block));
    add(converter->flush());
    return all;
}

/// Checks that every word has a time, in the order of the speech and up to its end.
void expectTimesInOrder(const LiveRun& live, double seconds) {
    double lastEnd = 0;
    std::size_t volatileCount = 0;
    for (const SpeechResult& result : live.results) {
        volatileCount += result.isFinal ? 0 : 1;
        double before = lastEnd - 0.5; // a line may begin a little before the previous one ends
        for (const SpeechRun& run : result.runs) {
            ASSERT_TRUE(run.audioStart && run.audioEnd) << run.text;
            EXPECT_LE(before, *run.audioStart) << result.text();
            // Start and end are equal if the previous line reaches beyond the word.
            EXPECT_LE(*run.audioStart, *run.audioEnd);
            EXPECT_LE(*run.audioEnd, seconds + 0.1);
            before = *run.audioStart;
        }
        if (result.isFinal && !result.runs.empty())
            lastEnd = *result.runs.back().audioEnd;
    }
    EXPECT_GT(lastEnd, seconds - 5) << "every second must reach the engine";
    EXPECT_GT(volatileCount, seconds / 2) << "words must appear while they are spoken";
}

} // namespace

struct LiveCase {
    const char* recording;
    RecognitionPolicy policy;
};

/// One test per recording, so that they can run in parallel: the engine takes most of the time.
class SpeechRecordingLiveTest : public ::testing::TestWithParam<LiveCase> {};

TEST_P(SpeechRecordingLiveTest, LiveAndFileModeAreAsAccurateAsTheWholeRecordingAtOnce) {
    const auto& [name, policy] = GetParam();
    const AudioBuffer recording = sample(name);
    LiveRun live(policy);
    live.hear(recording);
    const std::string reference = referenceOf(name);
    const double liveRate = wordErrorRate(reference, live.finalText());
    const double batchRate = wordErrorRate(reference, batchText(recording));
    const double fileRate = wordErrorRate(reference, live.fileText(recording));
    std::cout << name << ": word error rate live " << liveRate << ", at once " << batchRate
              << ", in file mode " << fileRate << "\n";
    EXPECT_LE(fileRate, liveRate + 0.02) << "replacing streams must not cost words";
    // One more word may differ in a process that has heard other recordings, because nothing resets
    // the engine's voice detector.
    EXPECT_LE(liveRate, batchRate + 0.03) << live.finalText();
    EXPECT_LT(batchRate, 0.3) << "the engine must understand most words";
    expectTimesInOrder(live, recording.seconds());
}

// In virtual time a pass costs nothing, so the short recording gets as many passes as on a very
// fast computer. The long one gets as many as on a slow computer, and the engine's stream is
// recreated after every two lines.
INSTANTIATE_TEST_SUITE_P(
    Recordings, SpeechRecordingLiveTest,
    ::testing::Values(LiveCase{"beckett", {}},
                      LiveCase{"two_cities", {.passInterval = 0.6, .linesBeforeRestart = 2}}),
    [](const auto& each) { return std::string(each.param.recording); });

TEST(SpeechRecordingTest, AFileThatEndsWithinASentenceKeepsItsLastWords) {
    AudioBuffer cut = sample("two_cities");
    for (const std::size_t seconds : {4U, 8U}) {
        cut.samples.resize(seconds * static_cast<std::size_t>(speechSampleRate));
        EXPECT_LE(wordErrorRate(batchText(cut), LiveRun().fileText(cut)), 0.1) << seconds << " s";
        cut = sample("two_cities");
    }
}

TEST(SpeechRecordingTest, EngineListsItsModelsAndTheShippedOneIsAsListed) {
    const auto library = MoonshineLibrary::shared();
    for (const OfferedSpeechModel& offer : SpeechModels::offered()) {
        const AvailableModel model = SpeechModelInventory::availableModel(offer, *library);
        std::uint64_t bytes = 0;
        for (const FileToFetch& file : model.files) {
            EXPECT_TRUE(ModelStore::isSafeName(file.name)) << file.name;
            EXPECT_TRUE(file.url.starts_with("https://")) << file.url;
            bytes += file.bytes;
        }
        EXPECT_NEAR(static_cast<double>(bytes), static_cast<double>(offer.bytes), 2e6)
            << offer.name;
    }
    PosixFileSystem disk;
    const ModelStore store(disk, "/nonexistent", ProgramPlaces::modelFolders());
    const StoredModel shipped = store.find(ModelKind::speech, SpeechModels::smallest).value();
    const AvailableModel listed =
        SpeechModelInventory::availableModel(SpeechModels::offered().front(), *library);
    ASSERT_EQ(shipped.files.size(), listed.files.size());
    for (const FileToFetch& file : listed.files)
        EXPECT_EQ(CRC32C::ofFile(shipped.path(file.name)), file.crc32c) << file.name;
}
