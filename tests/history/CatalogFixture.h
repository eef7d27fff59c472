#pragma once

#include "Tessarune/history/RecordingCatalog.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/simulation/FaultyFileSystem.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace tessarune::testing {

/// A catalog on a simulated computer, and what it logs.
class Catalogued {
  public:
    Catalogued() {
        setenv("TZ", "Asia/Shanghai", 1); // before anything reads it
        TessaruneLog::setDiagnosticsLevel(DiagnosticsLevel::core);
        TessaruneLog::setSink([this](auto, auto, const std::string& text) { log.push_back(text); });
        disk.setContents("/data/placeholder", ""); // creates the folder
    }
    ~Catalogued() { TessaruneLog::setSink({}); }

    RecordingMetadata recording(double startedAt, const std::string& name, const UUID& id) {
        RecordingMetadata made;
        made.id = id;
        made.startedAt = startedAt;
        made.endedAt = startedAt + 2;
        made.duration = 2;
        made.byteCount = 64044; // a WAV of two seconds at 16 kHz
        made.filePath = "/data/Recordings/" + name;
        return made;
    }
    /// Adds a recording with its audio file to the catalog.
    UUID add(double startedAt, const std::string& name) {
        const UUID id = makeID();
        disk.setContents("/data/Recordings/" + name, std::string(64044, 'x'));
        catalog.upsert(recording(startedAt, name, id));
        return id;
    }
    void setIndex(const std::string& text) { disk.setContents(paths.recordingIndex(), text); }
    nlohmann::json index() {
        return nlohmann::json::parse(disk.contentsOf(paths.recordingIndex()));
    }
    /// The names of the audio files without extensions, in the order of the index: "name name ".
    std::string order() {
        std::string names;
        for (const auto& entry : catalog.recordings())
            names += std::filesystem::path(entry.filePath).stem().string() + " ";
        return names;
    }
    std::vector<nlohmann::json> events(const std::string& name) {
        logger.flush();
        std::vector<nlohmann::json> found;
        for (const auto& file : disk.list(paths.logs())) {
            std::istringstream lines(disk.contentsOf(paths.logs() / file));
            for (std::string line; std::getline(lines, line);) {
                auto event = nlohmann::json::parse(line, nullptr, false);
                if (event.is_object() && event["event"] == name)
                    found.push_back(std::move(event));
            }
        }
        return found;
    }

    UUIDSource makeID = countingUUIDSource();
    std::vector<std::string> log;
    SimulatedHost host{1'760'011'200};
    simulation::FaultyFileSystem disk;
    TessarunePaths paths{"/data"};
    TessaruneFileLogger logger{host, disk, paths};
    NotificationCenter notifications;
    RecordingCatalog catalog{host, disk, paths, logger, notifications};
};

} // namespace tessarune::testing
