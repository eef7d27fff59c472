#include "Tessarune/audio/AudioSessionRecorder.h"
#include "Tessarune/audio/WAVHeader.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/simulation/FaultyFileSystem.h"
#include "tests/simulation/ScriptedAudioConverter.h"
#include "tests/support/Await.h"
#include "tests/support/LoggedLines.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using PowerLoss = simulation::FaultyFileSystem::PowerLoss;

const std::filesystem::path folder = "/data/Recordings";

class AudioSessionRecorderTests : public ::testing::Test {
  protected:
    AudioSessionRecorderTests() {
        setenv("TZ", "UTC", 1);
        AudioSessionRecorder::Catalog catalog;
        catalog.recordingsFolder = folder;
        catalog.prepareDirectories = [this] { disk.createDirectories(folder); };
        catalog.upsert = [this](const RecordingMetadata& entry) {
            entries.push_back(entry);
            return entries.size() > failingEntries;
        };
        catalog.isNameTaken = [this](const std::string& name) { return takenNames.contains(name); };
        catalog.makeID = countingUUIDSource();
        recorder = AudioSessionRecorder::create(host, disk, logger, catalog, converters.maker());
        recorder->onStarted = [this](const RecordingMetadata&) { told.push_back("started"); };
        recorder->onFinished = [this](const RecordingMetadata&) { told.push_back("finished"); };
        recorder->onError = [this](const std::string& text) {
            told.push_back(text.substr(0, text.find("：")));
        };
        files.setContents("/data/placeholder", "");
    }

    void append(std::vector<float> samples, double rate = 16000, int channels = 1) {
        recorder->append(
            std::make_shared<AudioBuffer>(AudioBuffer{{rate, channels}, std::move(samples)}));
        host.runUntilIdle();
    }
    std::optional<RecordingMetadata> finish() {
        return testing::await(host, recorder->finishAndStop());
    }
    std::string file() const { return disk.contentsOf(entries.back().filePath); }
    WAVHeader header() const { return WAVHeader::decoded(file()).value(); }
    std::vector<std::int16_t> samples() const {
        std::vector<std::int16_t> all;
        const std::string bytes = file();
        for (std::size_t at = 44; at + 1 < bytes.size(); at += 2)
            all.push_back(
                static_cast<std::int16_t>(static_cast<unsigned char>(bytes[at]) |
                                          static_cast<unsigned char>(bytes[at + 1]) << 8));
        return all;
    }
    /// The number of sound bytes before the first silent sample. Tests append no silent sample.
    std::size_t loudBytes(const simulation::FaultyFileSystem& onDisk) const {
        const std::string bytes = onDisk.contentsOf(entries.back().filePath);
        std::size_t at = 44;
        while (at + 1 < bytes.size() && bytes[at + 1] != 0)
            at += 2;
        return at - 44;
    }
    /// The names of the recorder's events, without their common prefix.
    std::string events() {
        logger.flush();
        std::string names;
        for (const auto& line : testing::loggedLines(files, "/data/Logs"))
            names += line["event"].get<std::string>().substr(14) + " ";
        return names;
    }

    SimulatedHost host{1'760'011'200};
    simulation::FaultyFileSystem disk;
    simulation::FaultyFileSystem files; // for the log only
    TessaruneFileLogger logger{host, files, TessarunePaths{"/data"}};
    simulation::ScriptedAudioConverters converters;
    std::set<std::string> takenNames;
    std::vector<RecordingMetadata> entries;
    std::size_t failingEntries = 0; ///< how many of the first entries cannot be saved
    std::vector<std::string> told;
    std::shared_ptr<AudioSessionRecorder> recorder;
};

TEST_F(AudioSessionRecorderTests, WritesMonoPCMAndKeepsTheCatalogUpToDate) {
    TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::verbose);
    recorder->start();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].filePath, folder / "20251009-120000.wav");
    EXPECT_EQ(entries[0].audioFormat, "wav/pcm_s16le");
    EXPECT_FALSE(entries[0].endedAt);
    EXPECT_EQ(header().sampleRate, 16000U);
    append({}, 8000);
    append({0.5F, 0.5F, 1.0F, -1.0F, -1.0F, -1.0F, 0.25F, 0.0F}, 48000, 2);
    EXPECT_EQ(header().sampleRate, 48000U) << "the rate of the first buffer with sound";
    append({std::numeric_limits<float>::quiet_NaN(), 1e30F}, 48000);
    host.shiftWallClock(-7200);
    host.advanceBy(3);
    const auto finished = finish();
    TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::core);

    ASSERT_TRUE(finished);
    EXPECT_EQ(samples(), (std::vector<std::int16_t>{23170, 0, -32767, 5792, 0, 32767}));
    EXPECT_EQ(header(), (WAVHeader{.sampleRate = 48000, .dataSize = 12}));
    EXPECT_EQ(finished, entries.back());
    EXPECT_EQ(finished->endedAt, finished->startedAt + 3) << "setting the clock does not move it";
    EXPECT_EQ(finished->duration, 6.0 / 48000);
    EXPECT_EQ(finished->byteCount, 56);
    EXPECT_EQ(finished->sampleRate, 48000);
    EXPECT_EQ(told, (std::vector<std::string>{"started", "finished"}));
    EXPECT_EQ(events(), "start.request start.done stop.request stop.done ");
    recorder->stop();
    EXPECT_FALSE(finish()) << "after the end no recording is open";
    EXPECT_EQ(entries.size(), 2U);
}

TEST_F(AudioSessionRecorderTests, AllButTheLastTwoMegabytesSurviveAnything) {
    const std::size_t block = 400'000;
    failingEntries = 2;
    for (const PowerLoss loss :
         {PowerLoss::keepsNothing, PowerLoss::keepsSize, PowerLoss::keepsOverwrites}) {
        recorder->start();
        for (std::size_t written = block; written < 5'000'000; written += block) {
            append(std::vector<float>(block / 2, 0.5F), 48000);
            ASSERT_LE(written, header().dataSize + 2'000'000) << "a kill loses too much";
            simulation::FaultyFileSystem afterwards(disk);
            afterwards.losePower(loss);
            ASSERT_LE(written, loudBytes(afterwards) + 2'000'000) << "a power cut loses too much";
        }
        EXPECT_GE(entries.size(), failingEntries + 1) << "a failed entry is saved again";
        host.advanceBy(1);
        spawn(Executor::main(host), recorder->synchronize());
        host.runUntilIdle();
        simulation::FaultyFileSystem asleep(disk);
        asleep.losePower(loss);
        ASSERT_EQ(loudBytes(asleep), header().dataSize) << "synchronized sound is safe";
        finish();
        simulation::FaultyFileSystem afterwards(disk);
        afterwards.losePower(loss);
        EXPECT_EQ(afterwards.contentsOf(entries.back().filePath), file());
    }
}

TEST_F(AudioSessionRecorderTests, ThreeWriteFailuresInARowEndTheRecordingAndNotTheSession) {
    const std::string first = "录音写入失败";
    const std::string degraded = "录音写入持续失败，已保留目前已写入的录音。";
    const struct {
        const char* writes; ///< one character per write; "x" fails
        std::vector<std::string> told;
        std::string kept; ///< one character per sample; "x" is silence
        const char* events;
    } cases[] = {
        {"..x..", {first}, "..x..", "write.pcmBuffer.failed stop.degraded "},
        {"xx.xx.xx.", {first}, "xx.xx.xx.", "write.pcmBuffer.failed stop.degraded "},
        {".xxx..xxx",
         {first, degraded},
         ".",
         "write.pcmBuffer.failed write.degraded stop.degraded "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.writes);
        told.clear();
        logger.deleteAllLogs();
        host.advanceBy(1);
        recorder->start();
        for (const char* write = c.writes; *write; ++write) {
            if (*write == 'x')
                disk.failAt = disk.operations + 1;
            append({0.5F});
            disk.failAt = simulation::FaultyFileSystem::never;
        }
        ASSERT_TRUE(finish());
        std::vector<std::string> expected{"started"};
        expected.insert(expected.end(), c.told.begin(), c.told.end());
        expected.push_back("finished");
        EXPECT_EQ(told, expected);
        std::string kept;
        for (const std::int16_t sample : samples())
            kept += sample == 16384 ? '.' : 'x';
        EXPECT_EQ(kept, c.kept);
        EXPECT_EQ(header().dataSize, c.kept.size() * 2);
        EXPECT_EQ(events(), std::string("start.request ") + c.events);
    }
}

TEST_F(AudioSessionRecorderTests, AFailureAtTheEndIsReportedOnceAndKeepsTheEntry) {
    recorder->start();
    append({0.5F});
    disk.failFrom = disk.operations + 1;
    const auto finished = finish();
    ASSERT_TRUE(finished);
    EXPECT_EQ(finished->duration, 1.0 / 16000);
    EXPECT_EQ(told, (std::vector<std::string>{"started", "录音文件收尾失败", "finished"}));
    EXPECT_EQ(events(), "start.request stop.patchHeader.failed stop.synchronize.failed "
                        "stop.close.failed stop.degraded ");
}

TEST_F(AudioSessionRecorderTests, AFailedHeaderUpdateIsReportedOnceAndRetriedRarely) {
    int attempts = 0;
    recorder->start();
    append({0.5F});
    disk.onOperation = [&](const std::string& operation, const auto&) {
        attempts += operation == "overwrite" ? 1 : 0;
        disk.failAt =
            operation == "overwrite" ? disk.operations : simulation::FaultyFileSystem::never;
    };
    for (int i = 0; i < 10000; ++i)
        append(std::vector<float>(160, 0.5F));
    EXPECT_EQ(header().dataSize, 0U);
    EXPECT_LE(attempts, 7) << "at 2 MB, and then each 0.2 MB up to 3.2 MB";
    disk.onOperation = nullptr;
    for (int i = 0; i < 700; ++i)
        append(std::vector<float>(160, 0.5F));
    EXPECT_GT(header().dataSize, 3'000'000U);
    EXPECT_EQ(told, (std::vector<std::string>{"started", "录音文件收尾失败"}));
}

TEST_F(AudioSessionRecorderTests, AFullDiskEndsTheRecordingAndNotTheSession) {
    disk.capacity = AudioSessionRecorder::reservedDiskBytes - 1;
    EXPECT_NO_THROW(recorder->start());
    append({0.5F});
    EXPECT_FALSE(finish());
    EXPECT_EQ(told, std::vector<std::string>{"录音写入失败"});
    EXPECT_TRUE(entries.empty() && disk.list(folder).empty());

    told.clear();
    disk.capacity = AudioSessionRecorder::reservedDiskBytes + 3'000'000;
    recorder->start();
    for (int i = 0; i < 300; ++i)
        append(std::vector<float>(16000, 0.5F));
    EXPECT_EQ(told, (std::vector<std::string>{"started", "录音写入失败",
                                              "录音写入持续失败，已保留目前已写入的录音。"}));
    EXPECT_GT(disk.freeSpace(folder), 10'000'000U) << "space remains for the transcripts";
    EXPECT_EQ(finish()->byteCount, static_cast<std::int64_t>(file().size()));

    told.clear();
    disk.recover();
    host.advanceBy(1);
    recorder->start();
    append({0.5F});
    EXPECT_EQ(finish()->duration, 1.0 / 16000);
    EXPECT_EQ(told, (std::vector<std::string>{"started", "finished"})) << "there is space again";
}

TEST_F(AudioSessionRecorderTests, AStartThatIsNotPermittedThrows) {
    disk.refused = ".wav";
    disk.failure = std::errc::permission_denied;
    EXPECT_THROW(recorder->start(), std::system_error);
    EXPECT_TRUE(told.empty() && entries.empty());
}

TEST_F(AudioSessionRecorderTests, AnEarlierRecordingOfTheSameSecondIsNotOverwritten) {
    disk.setContents(folder / "20251009-120000.wav", "not in the catalog");
    recorder->start();
    finish();
    EXPECT_EQ(entries.back().filePath, folder / "20251009-120000.wav");
    EXPECT_EQ(file().size(), 44U);
    takenNames = {"20251009-120000", "20251009-120000-2"};
    recorder->start();
    EXPECT_EQ(entries.back().filePath, folder / "20251009-120000-3.wav");
}

TEST_F(AudioSessionRecorderTests, AStalledDiskLosesOnlySoundBeyondTheBuffer) {
    constexpr std::size_t channels = 50; // large in memory; one channel on the disk
    constexpr std::size_t frames = 20'000;
    constexpr std::size_t blockBytes = frames * channels * sizeof(float);
    constexpr std::size_t room = AudioSessionRecorder::maximumWaitingBytes / blockBytes;
    const auto loud = std::make_shared<AudioBuffer>(
        AudioBuffer{{48000, channels}, std::vector<float>(frames * channels, 0.05F)});
    const auto hear = [&](std::size_t blocks) {
        for (std::size_t i = 0; i < blocks; ++i)
            recorder->append(loud);
    };
    recorder->start();
    hear(room + 3);
    host.runUntilIdle();
    EXPECT_EQ(samples().size(), room * frames);
    EXPECT_EQ(told, std::vector<std::string>{"started"});
    hear(1);
    host.runUntilIdle();
    EXPECT_EQ(told.back(), "录音写入失败");
    hear(room + 2); // the recording ends before there is room again
    finish();
    std::string blocks; // one character per block; "x" is sound
    const auto sound = samples();
    for (std::size_t at = 0; at < sound.size(); at += frames)
        blocks += sound[at] == 0 ? '.' : 'x';
    EXPECT_EQ(sound.size() % frames, 0U);
    EXPECT_EQ(blocks, std::string(room, 'x') + "...x" + std::string(room, 'x') + "..")
        << "lost sound becomes silence of the same length";
}

TEST_F(AudioSessionRecorderTests, GapsBecomeSilenceAndOtherRatesAreConverted) {
    recorder->start();
    recorder->appendSilence(0.000125); // before the rate is known; two samples at 16,000 Hz
    append({1, 1}, 16000);
    recorder->appendSilence(0.000125);
    recorder->appendSilence(-1);
    recorder->appendSilence(std::numeric_limits<double>::quiet_NaN());
    append({0.5F, 0, 0.5F, 0, 0.5F, 0}, 48000);
    append({1, 0}, 32000);
    append({-1}, 16000);
    const std::vector<std::int16_t> expected{0, 0, 32767, 32767, 0, 0, 16384, 0, 32767, -32767};
    finish();
    EXPECT_EQ(samples(), expected);
    EXPECT_EQ(header().sampleRate, 16000U);
    EXPECT_EQ(converters.made, (std::vector<AudioFormat>{{48000, 1}, {32000, 1}}));

    host.advanceBy(1);
    recorder->start();
    append({1}, 16000);
    converters.failures = 1;
    append({1, 1, 1}, 48000);
    append({1}, 16000);
    EXPECT_EQ(samples(), (std::vector<std::int16_t>{32767, 0, 32767}));
    converters.failures = 3;
    for (int i = 0; i < 4; ++i)
        append({1}, 44100);
    EXPECT_EQ(told.back(), "录音写入持续失败，已保留目前已写入的录音。");
}

} // namespace
} // namespace tessarune
