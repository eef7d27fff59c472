#include "Tessarune/audio/WAVHeader.h"
#include "Tessarune/history/RecordingAudioCompressor.h"
#include "Tessarune/history/RecordingRepair.h"
#include "Tessarune/history/SessionJournal.h"
#include "tests/history/CatalogFixture.h"
#include "tests/simulation/ScriptedMedia.h"
#include "tests/support/Await.h"

#include <gtest/gtest.h>

#include <map>

namespace tessarune {
namespace {

using simulation::FaultyFileSystem;
using PowerLoss = FaultyFileSystem::PowerLoss;

/// A computer that records one session; whatever it reported as done must survive.
class Computer : public testing::Catalogued {
  public:
    static constexpr int rows = 8;
    static constexpr std::size_t rowBytes = 2 * 1600; // 0.1 s at 16 kHz

    Computer() {
        older = add(1'759'000'000, "older.wav");
        catalog.saveTranscript("older text", older);
        disk.operations = 0;
    }

    /// Start, rows, stop, compress, save, in the order of a session.
    void runSession() {
        auto recorder = AudioSessionRecorder::create(host, disk, logger, catalog.forRecorder(), {});
        std::unique_ptr<SessionJournal> journal;
        recorder->onStarted = [&](const RecordingMetadata& metadata) {
            id = metadata.id;
            journal = std::make_unique<SessionJournal>(host, disk, logger,
                                                       catalog.journalURL(metadata.id),
                                                       *metadata.monotonicStart, "apple-en");
        };
        recorder->onError = [&](const std::string& text) { texts.push_back(text); };
        try {
            recorder->start();
        } catch (const std::system_error&) {
            return;
        }
        if (!id)
            return;
        for (int i = 0; i < rows; ++i)
            hear(*recorder, *journal, i);
        const auto finished = testing::await(host, recorder->finishAndStop());
        isFinished = finished && texts.empty() && isRunning();
        if (finished)
            compress(*finished);
        isSaved = catalog.saveTranscript(transcript(rows), *id);
        isSaved = catalog.saveBilingualTranscript("", *id) && isSaved;
        isSaved = catalog.saveWordTimeline(HistoryWordTimeline(), *id) && isSaved;
        if (isSaved)
            journal->discard();
    }

    /// Starts the program on a disk without faults.
    RecordingRepair::Report restart() {
        disk.recover();
        return repair();
    }
    RecordingRepair::Report repair() {
        return RecordingRepair(disk, catalog, logger).runAtLaunch();
    }

    /// Checks what must hold after a restart, whatever happened before.
    void expectConsistentHistory() {
        std::string names = order();
        ASSERT_NE(names.find("older "), std::string::npos);
        EXPECT_EQ(disk.contentsOf(catalog.transcriptURL(older)), "older text");
        EXPECT_EQ(disk.contentsOf("/data/Recordings/older.wav"), std::string(64044, 'x'));
        for (const auto& entry : catalog.recordings()) {
            EXPECT_TRUE(disk.has(entry.filePath));
            EXPECT_TRUE(entry.endedAt);
            if (entry.filePath.ends_with(".m4a")) {
                const auto wav = std::filesystem::path(entry.filePath).replace_extension("wav");
                EXPECT_FALSE(disk.has(wav));
            }
        }
        for (const auto& name : disk.list(paths.transcripts()))
            EXPECT_FALSE(name.ends_with(".live.ndjson")) << name;
        const auto report = restart();
        EXPECT_TRUE(report.recoveredSessions.empty() && !report.rebuiltIndex)
            << "the second start has nothing more to report";
        EXPECT_EQ(order(), names);
    }
    /// Checks that the session has at least `leastRows` rows and, while its sound is a WAV, at
    /// least `bytes` of it.
    void expectSession(std::size_t bytes, int leastRows) {
        const auto entry = catalog.recording(*id);
        ASSERT_TRUE(entry);
        if (entry->audioFormat == AudioSessionRecorder::audioFormat) {
            const std::string file = disk.contentsOf(entry->filePath);
            const auto header = WAVHeader::decoded(file);
            ASSERT_TRUE(header);
            EXPECT_EQ(header->dataSize, (file.size() - 44) / 2 * 2);
            EXPECT_GE(header->dataSize, bytes);
            EXPECT_EQ(entry->byteCount, static_cast<std::int64_t>(file.size()));
            EXPECT_EQ(entry->duration, static_cast<double>(header->dataSize) / 32000);
        }
        const std::string text = disk.contentsOf(catalog.transcriptURL(*id));
        EXPECT_TRUE(text.starts_with(transcript(leastRows))) << text;
    }
    static std::string transcript(int count) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += (i > 0 ? "\nrow " : "row ") + std::to_string(i);
        return text;
    }

    UUID older;
    std::optional<UUID> id;
    int rowsOnDisk = 0; ///< rows whose lines were written before the process ended
    bool isFinished = false;
    bool isSaved = false;
    std::vector<std::string> texts;

  private:
    bool isRunning() const { return disk.operations < disk.failFrom; }

    void hear(AudioSessionRecorder& recorder, SessionJournal& journal, int i) {
        recorder.append(std::make_shared<AudioBuffer>(
            AudioBuffer{{16000, 1}, std::vector<float>(rowBytes / 2, 0.5F)}));
        CaptionSegment row;
        row.id = makeID();
        row.sourceText = "row " + std::to_string(i);
        row.startedAt = host.now();
        journal.append(row);
        host.advanceBy(2);
        if (isRunning())
            rowsOnDisk = i + 1;
    }
    void compress(const RecordingMetadata& recording) {
        AudioExporter exporter(host, [&](const auto& from, const auto& to, const auto&, auto) {
            try {
                disk.read(from);
                disk.writeAtomically(to, std::string(20000, 'm'));
            } catch (const std::system_error& error) {
                throw MediaFileError(MediaFileError::Kind::writeFailed, error.what());
            }
        });
        RecordingAudioCompressor compressor(host, disk, catalog, logger, exporter,
                                            [&](const auto&) {
                                                return std::make_unique<simulation::SilentFile>(
                                                    recording.duration);
                                            },
                                            {});
        try {
            testing::await(host, compressor.compressWAVToM4A(recording, true));
        } catch (const std::runtime_error&) { // the WAV stays
        }
    }
};

/// The number of disk operations in a session without faults, whose result is checked.
std::uint64_t operationsOfASession() {
    Computer computer;
    computer.runSession();
    EXPECT_TRUE(computer.isSaved && computer.isFinished);
    const auto operations = computer.disk.operations;
    EXPECT_TRUE(computer.restart().recoveredSessions.empty());
    computer.expectConsistentHistory();
    computer.expectSession(0, Computer::rows);
    EXPECT_EQ(computer.catalog.recording(*computer.id)->audioFormat, "m4a/aac");
    EXPECT_EQ(computer.disk.list("/data/Recordings").size(), 2U);
    return operations;
}

TEST(SessionSurvivalTests, OneFailureAnywhereLosesNoIntactData) {
    const auto last = operationsOfASession();
    for (std::uint64_t n = 1; n <= 2 * last; ++n) {
        const bool failsLate = n > last;
        const std::uint64_t failing = failsLate ? n - last : n;
        SCOPED_TRACE("operation " + std::to_string(failing) +
                     (failsLate ? " happens, but reports a failure" : " fails"));
        Computer computer;
        computer.disk.failsLate = failsLate;
        computer.disk.failAt = failing;
        computer.runSession();
        computer.restart();
        computer.expectConsistentHistory();
        EXPECT_LE(computer.texts.size(), 1U) << "the user is told at most once";
        if (computer.id) // one buffer may be lost, but no row
            computer.expectSession((Computer::rows - 1) * Computer::rowBytes, Computer::rows);
    }
}

TEST(SessionSurvivalTests, KilledAnywhereTheNextStartFinishesTheSession) {
    const auto last = operationsOfASession();
    std::size_t recovered = 0;
    for (std::uint64_t n = 1; n <= last; ++n) {
        SCOPED_TRACE("killed at operation " + std::to_string(n));
        Computer computer;
        computer.disk.failFrom = n;
        computer.runSession();
        const auto report = computer.restart();
        recovered += report.recoveredSessions.size();
        computer.expectConsistentHistory();
        EXPECT_LE(computer.texts.size(), 3U);
        const bool wasCatalogued = computer.order() != "older ";
        if (wasCatalogued)
            computer.expectSession(static_cast<std::size_t>(computer.rowsOnDisk) *
                                       Computer::rowBytes,
                                   computer.rowsOnDisk);
        EXPECT_TRUE(wasCatalogued || computer.rowsOnDisk == 0);
    }
    EXPECT_GT(recovered, last / 4) << "too few kills left a session to recover";
}

TEST(SessionSurvivalTests, ARepairThatFailsOrIsKilledIsCompletedByTheNextStart) {
    Computer killed;
    killed.disk.onOperation = [&](const std::string& operation, const std::filesystem::path& path) {
        if (operation == "synchronize" && path.extension() == ".wav") // when the recorder stops
            killed.disk.failFrom = killed.disk.operations;
    };
    killed.runSession();
    ASSERT_EQ(killed.rowsOnDisk, Computer::rows);
    killed.disk.onOperation = nullptr;
    killed.disk.recover();
    const FaultyFileSystem left(killed.disk);
    const auto before = killed.disk.operations;
    EXPECT_EQ(killed.repair().recoveredSessions.size(), 1U);
    const auto last = killed.disk.operations - before;
    EXPECT_GT(last, 30U) << "the repair has too few operations that can fail";
    for (const bool isKilled : {true, false}) {
        for (std::uint64_t n = 1; n <= last; ++n) {
            SCOPED_TRACE((isKilled ? "killed at operation " : "failure of operation ") +
                         std::to_string(n));
            killed.disk.replaceContents(left);
            const auto fault = killed.disk.operations + n;
            (isKilled ? killed.disk.failFrom : killed.disk.failAt) = fault;
            killed.repair();
            killed.restart();
            killed.expectConsistentHistory();
            killed.expectSession(Computer::rows * Computer::rowBytes, Computer::rows);
        }
    }
}

TEST(SessionSurvivalTests, WhatWasReportedSavedSurvivesALossOfPower) {
    const auto last = operationsOfASession();
    for (const PowerLoss loss :
         {PowerLoss::keepsNothing, PowerLoss::keepsSize, PowerLoss::keepsOverwrites}) {
        for (std::uint64_t n = 1; n <= last + 1; ++n) {
            SCOPED_TRACE("operation " + std::to_string(n) + ", PowerLoss " +
                         std::to_string(static_cast<int>(loss)));
            Computer computer;
            computer.disk.failFrom = n;
            computer.runSession();
            computer.disk.losePower(loss);
            computer.restart();
            computer.expectConsistentHistory();
            // Three rows come in the five seconds that may be lost.
            if (computer.rowsOnDisk > 0)
                computer.expectSession(
                    computer.isFinished ? Computer::rows * Computer::rowBytes : 0,
                    computer.isSaved ? Computer::rows : std::max(0, computer.rowsOnDisk - 3));
        }
    }
}

TEST(SessionSurvivalTests, AFullDiskKeepsWhatIsThereAndTheNextSessionRecords) {
    const auto last = operationsOfASession();
    for (std::uint64_t n = 1; n <= last; ++n) {
        SCOPED_TRACE("full from operation " + std::to_string(n));
        Computer computer;
        computer.disk.onOperation = [&](const std::string& operation, const auto&) {
            const bool needsRoom =
                operation == "write" || operation == "append" || operation == "create";
            computer.disk.failAt = needsRoom && computer.disk.operations >= n
                                       ? computer.disk.operations
                                       : FaultyFileSystem::never;
        };
        computer.disk.failure = std::errc::no_space_on_device;
        computer.runSession();
        EXPECT_LE(computer.texts.size(), 2U);
        computer.disk.onOperation = nullptr;
        computer.restart();
        computer.expectConsistentHistory();
        computer.host.advanceBy(1);
        computer.texts.clear();
        computer.runSession();
        EXPECT_TRUE(computer.isSaved && computer.texts.empty());
        computer.expectSession(0, Computer::rows);
    }
}

TEST(SessionSurvivalTests, TheWAVStaysUntilAnM4AOfItsLengthReplacesIt) {
    using Kind = RecordingAudioCompressor::CompressionError::Kind;
    const struct {
        const char* name;
        double seconds; ///< of the M4A; below zero if it cannot be read
        const char* refused;
        std::size_t bytes; ///< of the M4A; 0 if it is not written
        const char* error;
        std::vector<std::string> audio;
    } cases[] = {
        {"good M4A", 2.4, "", 20000, "", {"a.m4a"}},
        {"too short", 1.4, "", 20000, "导出失败：", {"a.wav"}},
        {"unreadable", -1, "", 20000, "导出失败：", {"a.wav"}},
        {"not written", 2, "", 0, "压缩完成但找不到 M4A 文件：", {"a.wav"}},
        {"not catalogued", 2, "recordings.json", 20000, "导出失败：", {"a.wav"}},
        {"too small to hold sound", 2, "", 400, "/data/Recordings/a.m4a: too short", {"a.wav"}},
        {"WAV cannot be removed", 2, "a.wav", 20000, "", {"a.m4a", "a.wav"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        testing::Catalogued computer;
        const UUID id = computer.add(10, "a.wav");
        AudioExporter exporter(computer.host, [&](const auto&, const auto& to, const auto&, auto) {
            if (c.bytes > 0)
                computer.disk.setContents(to, std::string(c.bytes, 'm'));
        });
        RecordingAudioCompressor compressor(
            computer.host, computer.disk, computer.catalog, computer.logger, exporter,
            [&](const auto&) -> std::unique_ptr<MediaFile> {
                if (c.seconds < 0)
                    throw MediaFileError(MediaFileError::Kind::damaged, "no");
                return std::make_unique<simulation::SilentFile>(c.seconds);
            },
            {});
        const auto recording = *computer.catalog.recording(id);
        std::string error;
        if (*c.refused)
            computer.disk.onOperation = [&](const std::string& operation, const auto&) {
                computer.disk.refused =
                    operation == "remove" || operation == "write" ? c.refused : "";
            };
        try {
            testing::await(computer.host, compressor.compressWAVToM4A(recording, true));
        } catch (const std::runtime_error& failure) {
            error = failure.what();
        }
        EXPECT_EQ(error.substr(0, std::string(c.error).size()), c.error) << error;
        EXPECT_EQ(error.empty(), std::string(c.error).empty()) << error;
        computer.disk.onOperation = nullptr;
        computer.disk.recover();
        EXPECT_EQ(computer.disk.list("/data/Recordings"), c.audio);
        const auto now = *computer.catalog.recording(id);
        if (!error.empty()) {
            RecordingMetadata expected = recording;
            if (!*c.refused && c.bytes != 400) // an M4A that is too small is not tried again
                expected.awaitsCompression = true;
            EXPECT_EQ(now, expected);
            continue;
        }
        EXPECT_EQ(now.filePath, "/data/Recordings/a.m4a");
        EXPECT_EQ(now.byteCount, 20000);
        EXPECT_EQ(now.sampleRate, 16000);
        EXPECT_EQ(computer.events("audio.compress.removeSource.failed").size(), c.audio.size() - 1);
        try {
            testing::await(computer.host, compressor.compressWAVToM4A(recording, true));
        } catch (const RecordingAudioCompressor::CompressionError& failure) {
            EXPECT_EQ(failure.kind(), Kind::missingSource);
        }
    }
}

TEST(AudioExporterTests, SaysWhichSideFailedAndWhy) {
    using Kind = MediaFileError::Kind;
    for (const auto& [kind, side] : std::map<Kind, std::string>{
             {Kind::cannotOpen, "无法读取录音"},
             {Kind::unsupported, "无法读取录音"},
             {Kind::damaged, "无法读取录音"},
             {Kind::cannotCreate, "无法创建 M4A"},
             {Kind::writeFailed, "导出失败"},
         }) {
        SimulatedHost host;
        AudioExporter exporter(host, [kind = kind](const auto&, const auto&, const auto&, auto) {
            throw MediaFileError(kind, "because");
        });
        try {
            testing::await(host, exporter.transcodeToM4A("a", "b"));
            ADD_FAILURE() << "nothing was thrown: " << side;
        } catch (const AudioExporter::ExportError& error) {
            EXPECT_EQ(error.what(), side + "：because");
        }
    }
}

} // namespace
} // namespace tessarune
