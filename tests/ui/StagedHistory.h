#pragma once

#include "Tessarune/platform/qt-host/QtHost.h"
#include "Tessarune/ui/history/HistoryWindow.h"
#include "tests/simulation/FaultyFileSystem.h"
#include "tests/ui/OffscreenApplication.h"

#include <memory>
#include <string>
#include <vector>

namespace tessarune {

/// A history window over a catalog that a script fills.
class StagedHistory {
  public:
    StagedHistory() { disk.setContents("/data/placeholder", ""); }
    ~StagedHistory() { window.reset(); }

    /// So many seconds before `now`; without an end it is being recorded.
    UUID add(double ago, const std::string& text, const std::string& bilingual = "",
             bool isRunning = false) {
        RecordingMetadata recording;
        recording.id = UUID::random();
        recording.startedAt = now - ago;
        recording.duration = 754;
        if (!isRunning)
            recording.endedAt = recording.startedAt + recording.duration;
        recording.filePath = "/data/Recordings/" + recording.id.text() + ".wav";
        disk.setContents(recording.filePath, std::string(50'000, 'x'));
        catalog.upsert(recording);
        if (!text.empty())
            catalog.saveTranscript(text, recording.id);
        catalog.saveBilingualTranscript(bilingual, recording.id);
        return recording.id;
    }
    void time(const UUID& id, int sentences) {
        HistoryWordTimeline timeline;
        for (int i = 0; i < sentences; ++i)
            timeline.sentences.push_back({"", i * 7.5, i * 7.5 + 7, {}, "audioWord"});
        catalog.saveWordTimeline(timeline, id);
    }
    void open() {
        window = std::make_unique<HistoryWindow>(HistoryWindowEnvironment{
            host, catalog, disk, notifications, exporter, search, [this] { return changeProblem; },
            [this](const std::string& name, auto chosen) {
                suggested = name;
                chosen("/data/" + name);
            },
            [this](const std::string& text) { copied = text; }});
        window->show();
    }

    void runFor(int milliseconds) {
        QElapsedTimer running;
        running.start();
        while (!running.hasExpired(milliseconds))
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
    }

    QGuiApplication& application = offscreenApplication();
    QtHost host;
    const double now = host.now();
    simulation::FaultyFileSystem disk;
    TessarunePaths paths{"/data"};
    TessaruneFileLogger logger{host, disk, paths};
    NotificationCenter notifications;
    RecordingCatalog catalog{host, disk, paths, logger, notifications};
    AudioExporter audio{host, {}};
    HistoryExport exporter{host, catalog, disk, audio,
                           [](const HistoryTranscriptPDFDocument&) { return std::string("%PDF"); }};
    /// Without an index, so that it reads the transcripts.
    TranscriptSearch search{host,
                            disk,
                            catalog,
                            logger,
                            notifications,
                            [](const std::filesystem::path&) -> std::unique_ptr<SearchIndex> {
                                throw SearchIndexFailed("none here", false);
                            }};
    std::string changeProblem;
    std::string suggested; ///< the name of the last export
    std::string copied;
    std::unique_ptr<HistoryWindow> window;
};

} // namespace tessarune
