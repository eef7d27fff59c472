#include "Tessarune/audio/WAVHeader.h"
#include "Tessarune/history/RecordingAudioCompressor.h"
#include "Tessarune/history/RecordingRepair.h"
#include "Tessarune/history/SessionJournal.h"
#include "Tessarune/history/SessionJournalContent.h"
#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/host/LoopHost.h"
#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/media/M4ATranscoder.h"
#include "Tessarune/platform/media/SwresampleConverter.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "TessaruneCore/text/Text.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <random>
#include <thread>

namespace tessarune {
namespace {

namespace fs = std::filesystem;

/// The parts of the program that the recording and the repairing process share.
struct Program {
    Program(Host& host, const fs::path& folder)
        : paths{folder}, logger(host, files, paths), catalog(host, files, paths, logger, center) {}

    PosixFileSystem files;
    TessarunePaths paths;
    TessaruneFileLogger logger;
    NotificationCenter center;
    RecordingCatalog catalog;
};

/// Records one session after another, as fast as the disk allows, until the process is killed.
/// Writes the ID of each saved session to `report`.
Task<void> recordEndlessly(LoopHost& host, Program& program, int report) {
    AudioExporter exporter(host, transcodeToM4A);
    RecordingAudioCompressor compressor(host, program.files, program.catalog, program.logger,
                                        exporter, openFFmpegMediaFile, createM4A);
    const auto recorder =
        AudioSessionRecorder::create(host, program.files, program.logger,
                                     program.catalog.forRecorder(), makeSwresampleConverter);
    RecordingMetadata current;
    recorder->onStarted = [&](const RecordingMetadata& metadata) { current = metadata; };
    for (;;) {
        recorder->start();
        compressor.follow(current);
        SessionJournal journal(host, program.files, program.logger,
                               program.catalog.journalURL(current.id), *current.monotonicStart,
                               "apple-en");
        std::vector<CaptionSegment> rows;
        for (int i = 0; i < 40; ++i) {
            recorder->append(std::make_shared<AudioBuffer>(
                AudioBuffer{{48000, 1}, std::vector<float>(48000, 0.25F)}));
            rows.emplace_back();
            rows.back().id = UUID::random();
            rows.back().sourceText = "row " + std::to_string(i);
            journal.append(rows.back());
        }
        Task<std::optional<RecordingMetadata>> finishing = recorder->finishAndStop();
        const auto finished = co_await finishing;
        Task<RecordingMetadata> compressing = compressor.compressWAVToM4A(*finished, true);
        co_await compressing;
        std::string text = "saved";
        program.catalog.saveTranscript(text, current.id);
        journal.discard();
        text = current.id.text();
        if (::write(report, text.data(), text.size()) < 0)
            ::_exit(1);
    }
}

/// Runs `work` in a separate process and kills that process after a while.
void runAndKill(const fs::path& folder, std::chrono::microseconds after,
                const std::function<void(LoopHost&, Program&)>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        LoopHost host;
        Program program(host, folder);
        work(host, program);
        ::_exit(1);
    }
    std::this_thread::sleep_for(after);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

/// Records into `folder` until killed; returns the sessions that were reported as saved.
std::vector<UUID> recordAndKill(const fs::path& folder, std::chrono::microseconds after) {
    int report[2];
    if (::pipe(report) != 0)
        throw std::runtime_error("no pipe");
    runAndKill(folder, after, [&](LoopHost& host, Program& program) {
        spawn(Executor::main(host), recordEndlessly(host, program, report[1]));
        host.run();
    });
    ::close(report[1]);
    std::string all;
    char bytes[360]; // ten IDs of 36 characters
    for (ssize_t count = 0; (count = ::read(report[0], bytes, sizeof bytes)) > 0;)
        all.append(bytes, static_cast<std::size_t>(count));
    ::close(report[0]);
    std::vector<UUID> ids;
    for (std::size_t at = 0; at + 36 <= all.size(); at += 36)
        ids.push_back(UUID::parse(all.substr(at, 36)).value());
    return ids;
}

double playedSeconds(const fs::path& audio) {
    const auto file = openFFmpegMediaFile(audio);
    double seconds = 0;
    while (const AudioBufferPtr block = file->read())
        seconds += block->seconds();
    return seconds;
}

/// Checks, before any repair, that the size in the header of each WAV is that of the sound in the
/// file. It may be lower by the bytes between two updates of the header and by one second of sound.
void expectPlayable(Program& program) {
    for (const auto& entry : program.catalog.recordings()) {
        if (!entry.filePath.ends_with(".wav"))
            continue;
        const auto header = WAVHeader::decoded(program.files.read(entry.filePath, 0, 64));
        ASSERT_TRUE(header);
        EXPECT_GE(header->dataSize + 44 + AudioSessionRecorder::headerFlushIntervalBytes + 96000,
                  program.files.size(entry.filePath));
    }
}

void expectRepaired(Program& program, const std::vector<UUID>& saved) {
    const auto text = [&](const UUID& id) {
        return testing::contentsOf(program.catalog.transcriptURL(id));
    };
    for (const auto& id : saved)
        EXPECT_EQ(text(id), "saved");
    for (const auto& entry : program.catalog.recordings()) {
        EXPECT_TRUE(entry.endedAt);
        EXPECT_NEAR(playedSeconds(entry.filePath), entry.duration, 0.5) << entry.filePath;
        EXPECT_FALSE(fs::exists(program.catalog.journalURL(entry.id)));
    }
    for (const auto& folder : {program.paths.recordings(), program.paths.transcripts()}) {
        for (const auto& name : program.files.list(folder))
            EXPECT_TRUE(name.find(".part") == std::string::npos &&
                        name.find(".new-") == std::string::npos)
                << name;
    }
}

int numberOfKills() {
    const char* wanted = std::getenv("TESSARUNE_KILLS");
    return wanted ? std::atoi(wanted) : 20;
}

TEST(KilledSessionTests, TheNextLaunchRecoversASessionThatWasKilledAtAnyMoment) {
    const int kills = numberOfKills();
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::size_t recovered = 0;
    for (int i = 0; i < kills; ++i) {
        SCOPED_TRACE("kill " + std::to_string(i));
        const testing::TemporaryFolder folder;
        const auto saved =
            recordAndKill(folder.path(), std::chrono::microseconds(random() % 1'500'000));
        SimulatedHost host;
        Program program(host, folder.path());
        expectPlayable(program);
        std::map<UUID, std::size_t> journaled;
        for (const auto& entry : program.catalog.recordings())
            journaled[entry.id] = SessionJournalContent::decoded(
                                      testing::contentsOf(program.catalog.journalURL(entry.id)))
                                      .rows.size();
        RecordingRepair repair(program.files, program.catalog, program.logger);
        recovered += repair.runAtLaunch().recoveredSessions.size();
        expectRepaired(program, saved);
        for (const auto& [id, rows] : journaled) { // each row has two words
            const auto text = testing::contentsOf(program.catalog.transcriptURL(id));
            EXPECT_TRUE(text == "saved" || Text::countOfWhiteSpaceSeparated(text) == 2 * rows);
        }
        EXPECT_TRUE(repair.runAtLaunch().recoveredSessions.empty());
    }
    EXPECT_GT(recovered, 0U) << "no kill interrupted a recording";
}

TEST(KilledRefinementTests, TextAndTimesAreOfTheSameRefinement) {
    std::mt19937 random(std::random_device{}());
    int replaced = 0;
    for (int i = 0; i < numberOfKills(); ++i) {
        const testing::TemporaryFolder folder;
        SimulatedHost host;
        Program program(host, folder.path());
        RecordingMetadata recording;
        recording.id = UUID::random();
        recording.filePath = (program.paths.recordings() / "a.m4a").string();
        program.catalog.upsert(recording);
        program.files.writeAtomically(recording.filePath, "sound");
        const auto refineEndlessly = [&](LoopHost&, Program& refining) {
            for (int round = 0;; ++round) {
                HistoryWordTimeline timeline;
                timeline.sentences = {{std::to_string(round), 0, 1, std::nullopt, "audioWord"}};
                refining.catalog.saveRefinedTranscript(timeline.sentences.front().source, "both",
                                                       timeline, recording.id);
            }
        };
        runAndKill(folder.path(), std::chrono::microseconds(random() % 50'000), refineEndlessly);
        RecordingRepair(program.files, program.catalog, program.logger).runAtLaunch();
        const std::string text = testing::contentsOf(program.catalog.transcriptURL(recording.id));
        const auto timeline = HistoryWordTimeline::decoded(
            testing::contentsOf(program.catalog.wordTimelineURL(recording.id)));
        EXPECT_EQ(timeline ? timeline->sentences.front().source : "", text);
        for (const std::string& name : program.files.list(program.paths.transcripts()))
            EXPECT_FALSE(name.ends_with(RecordingCatalog::replacementSuffix)) << name;
        replaced += text.empty() ? 0 : 1;
    }
    EXPECT_GT(replaced, 0) << "no killed process had replaced a text";
}

} // namespace
} // namespace tessarune
