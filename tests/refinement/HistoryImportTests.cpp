#include "Tessarune/history/RecordingRepair.h"
#include "Tessarune/refinement/HistoryImportCoordinator.h"
#include "tests/refinement/RefinedRecording.h"
#include "tests/support/MemoryUserDefaults.h"

#include <gtest/gtest.h>

using namespace tessarune;
using namespace tessarune::testing;
using Problems = std::vector<HistoryImportCoordinator::Problem>;

namespace {

/// A simulated computer with files to import; those that begin with "sound" are sound files.
class Importing : public RefinedRecording {
  public:
    Importing() {
        settings.translationBackend = "苹果";
        disk.setContents("/home/talk.MP3", "sound" + std::string(9'000'000, '.'));
        disk.setContents("/home/film", "sound");
        disk.setContents("/home/old.part", "sound");
        disk.setContents("/home/note.txt", "no sound");
        disk.setContents("/home/empty.wav", "");
        startProgram();
        selection_ = notifications.observe(NotificationName::historyImportSelectRecording,
                                           [this](const NotificationObject& object) {
                                               selected.push_back(std::get<UUID>(object));
                                           });
    }
    ~Importing() { imports.reset(); }

    void import(std::vector<std::filesystem::path> files) {
        problems.reset();
        spawn(Executor::main(host), await(this, std::move(files)));
    }
    void startProgram() {
        imports.reset();
        service = std::make_unique<HistoryRefinementService>(environment());
        imports = std::make_unique<HistoryImportCoordinator>(HistoryImportCoordinator::Environment{
            host, disk, catalog, logger, notifications, settings, *service,
            [this](const auto& path) { return open(path); }});
    }
    RecordingRepair::Report restart() {
        return RecordingRepair(disk, catalog, logger).runAtLaunch();
    }
    void finish() { host.runUntilIdle(host.now() + 1000); }
    /// The files of the recordings, except for the one of the fixture.
    std::vector<std::string> sounds() {
        std::vector<std::string> names = disk.list("/data/Recordings");
        std::erase(names, "talk.wav");
        return names;
    }

    MemoryUserDefaults defaults;
    AppSettings settings{defaults};
    std::unique_ptr<HistoryImportCoordinator> imports;
    std::optional<Problems> problems;
    std::vector<UUID> selected;
    std::stop_source stop;

  private:
    std::unique_ptr<MediaFile> open(const std::filesystem::path& path) {
        if (!disk.contentsOf(path).starts_with("sound"))
            throw MediaFileError(MediaFileError::Kind::notMedia, path.string() + " is no sound");
        return environment().openMedia(path);
    }
    static Task<void> await(Importing* self, std::vector<std::filesystem::path> files) {
        Task<Problems> importing =
            self->imports->importAudio(std::move(files), self->stop.get_token());
        self->problems = co_await importing;
    }
    NotificationCenter::Observation selection_;
};

} // namespace

TEST(HistoryImportTests, EachImportedFileBecomesARecordingWithATranscript) {
    Importing computer;
    computer.soundSeconds = 90;
    computer.import({"/home/talk.MP3", "/home/film", "/home/old.part"});
    computer.host.advanceBy(0.5);
    EXPECT_EQ(computer.imports->transcribingIDs()->size(), 3U);
    computer.finish();
    EXPECT_TRUE(computer.problems->empty());
    EXPECT_TRUE(computer.imports->transcribingIDs()->empty());
    ASSERT_EQ(computer.selected.size(), 3U);
    const std::vector<std::array<std::string, 3>> expected{
        {"MP3", "mp3", "talk"}, {"m4a", "m4a", "film"}, {"m4a", "m4a", "old"}};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const auto& [extension, format, note] = expected[i];
        const UUID id = computer.selected[i];
        const RecordingMetadata recording = computer.catalog.recording(id).value();
        EXPECT_EQ(recording.filePath, "/data/Recordings/" + id.text() + "." + extension);
        EXPECT_EQ(recording.audioFormat, format);
        EXPECT_EQ(recording.note, note);
        EXPECT_EQ(recording.duration, 90);
        EXPECT_EQ(recording.endedAt, recording.startedAt + 90);
        EXPECT_EQ(recording.sampleRate, 100);
        EXPECT_EQ(recording.channelCount, 1);
        EXPECT_EQ(computer.disk.contentsOf(computer.catalog.transcriptURL(id)),
                  "New words.\nAnd more.");
    }
    EXPECT_EQ(computer.disk.contentsOf(computer.catalog.recording(computer.selected[0])->filePath),
              computer.disk.contentsOf("/home/talk.MP3"));
}

TEST(HistoryImportTests, AnImportThatFailsIsReportedAndLeavesNothing) {
    Importing computer;
    computer.import({"/home/note.txt", "/home", "/home/missing.wav", "/home/empty.wav", "-"});
    computer.finish();
    EXPECT_EQ(computer.problems->size(), 5U);
    computer.disk.capacity = computer.disk.usedSpace() + 9'000'000;
    computer.import({"/home/talk.MP3"});
    computer.finish();
    EXPECT_EQ(computer.problems->size(), 1U) << "the disk has no room for the copy";
    computer.disk.recover();
    computer.stop.request_stop();
    computer.import({"/home/talk.MP3"});
    computer.finish();
    EXPECT_TRUE(computer.problems->empty());
    EXPECT_TRUE(computer.sounds().empty());
    EXPECT_EQ(computer.catalog.recordings().size(), 1U);
}

TEST(HistoryImportTests, OneFaultOfTheDiskOrAKillLeavesACompleteRecordingOrNone) {
    for (const bool isKilled : {false, true}) {
        for (std::uint64_t operation = 1;; ++operation) {
            SCOPED_TRACE((isKilled ? "killed at operation " : "failure of operation ") +
                         std::to_string(operation));
            Importing computer;
            const std::uint64_t last = computer.disk.operations + operation;
            (isKilled ? computer.disk.failFrom : computer.disk.failAt) = last;
            computer.import({"/home/talk.MP3"});
            computer.finish();
            const bool wasReached = computer.disk.operations >= last;
            computer.disk.recover();
            ASSERT_TRUE(computer.problems);
            const RecordingRepair::Report found = computer.restart();
            for (const RecordingMetadata& import : found.untranscribedImports) {
                computer.imports->startTranscription(import.id, import.filePath);
                computer.finish();
            }
            for (const UUID& id : computer.selected) {
                if (!computer.catalog.recording(id) || !found.brokenOffImports.empty())
                    continue;
                EXPECT_NE(computer.disk.contentsOf(computer.catalog.transcriptURL(id)), "");
                if (isKilled)
                    EXPECT_TRUE(computer.disk.has(computer.catalog.bilingualTranscriptURL(id)));
            }
            const RecordingRepair::Report again = computer.restart();
            EXPECT_TRUE(again.untranscribedImports.empty() && again.brokenOffImports.empty())
                << "a second start reports nothing";
            const std::size_t imported = computer.catalog.recordings().size() - 1;
            EXPECT_EQ(computer.sounds().size(), imported);
            if (!isKilled)
                EXPECT_EQ(imported, computer.problems->empty() ? 1U : 0U);
            if (!wasReached)
                break;
        }
    }
}

/// A file that crashes the decoder, the recogniser or the translator must not do so at each start.
TEST(HistoryImportTests, AnImportIsResumedAfterARegularEndButNotAfterACrash) {
    struct Case {
        double seconds; ///< of the import, before the program ends
        bool isOrderly;
        std::size_t resumed;   ///< imports that the next start resumes
        std::size_t brokenOff; ///< imports that the next start only reports
    };
    const std::vector<Case> cases{
        {0.5, true, 1, 0}, {0.5, false, 0, 1}, {5, true, 1, 0}, {5, false, 0, 1}, {50, true, 0, 0}};
    for (const Case& each : cases) {
        SCOPED_TRACE(::testing::Message()
                     << each.seconds << (each.isOrderly ? " s, regular end" : " s, crash"));
        Importing computer;
        computer.translation->answers = {{.delay = 10}};
        computer.import({"/home/film"});
        computer.host.advanceBy(each.seconds);
        computer.disk.failFrom = each.isOrderly ? computer.disk.never : computer.disk.operations;
        spawn(Executor::main(computer.host), computer.service->end());
        computer.finish();
        computer.disk.recover();
        const RecordingRepair::Report found = computer.restart();
        EXPECT_EQ(found.untranscribedImports.size(), each.resumed);
        EXPECT_EQ(found.brokenOffImports.size(), each.brokenOff);
        computer.startProgram();
        computer.translation->answers.clear();
        for (const RecordingMetadata& import : found.untranscribedImports)
            computer.imports->startTranscription(import.id, import.filePath);
        computer.finish();
        const UUID& id = computer.selected.front();
        EXPECT_EQ(computer.disk.has(computer.catalog.bilingualTranscriptURL(id)),
                  each.brokenOff == 0);
        const RecordingRepair::Report again = computer.restart();
        EXPECT_TRUE(again.untranscribedImports.empty() && again.brokenOffImports.empty())
            << "a second start reports nothing";
    }
}

TEST(HistoryImportTests, AnImportInWhichNothingIsRecognisedIsNoFailure) {
    Importing computer;
    computer.heard.clear();
    computer.import({"/home/film"});
    computer.finish();
    EXPECT_TRUE(computer.disk.has(computer.catalog.transcriptURL(computer.selected.front())));
    EXPECT_TRUE(computer.service->failures()->empty());
}

TEST(HistoryImportTests, AnImportThatIsDeletedWhileItIsTranscribedStaysDeleted) {
    Importing computer;
    computer.import({"/home/film"});
    computer.host.advanceBy(0.5);
    computer.catalog.deleteRecording(computer.selected.front());
    computer.finish();
    EXPECT_TRUE(computer.imports->transcribingIDs()->empty());
    EXPECT_TRUE(computer.sounds().empty());
    EXPECT_FALSE(computer.disk.has(computer.catalog.transcriptURL(computer.selected.front())));
}
