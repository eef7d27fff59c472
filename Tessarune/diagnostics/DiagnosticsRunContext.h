#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/diagnostics/ProcessFigures.h"
#include "Tessarune/session/LiveAudioInactivityAutoStopConfiguration.h"
#include "Tessarune/shell/AppSettings.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

/// What a run says of the program, the computer and the settings. Main queue.
namespace tessarune::DiagnosticsRunContext {

/// What program this is; the front end knows it.
struct App {
    std::string name;
    std::string version;
    std::string bundlePath; ///< where the program is installed
    std::string executablePath;
};

nlohmann::json appSnapshot(const App& app);
/// Any thread; sensors may take a while to answer.
nlohmann::json hostSnapshot(ProcessFigures& figures);
nlohmann::json runtimeSnapshot();
nlohmann::json recognitionSnapshot(const AppSettings& settings);
nlohmann::json translationSnapshot(const AppSettings& settings);
nlohmann::json audioSourceSnapshot(const AudioSource& source, const std::string& name);
nlohmann::json captureSnapshot(const AppSettings& settings, const AudioSource& source,
                               const std::string& sourceName,
                               const LiveAudioInactivityAutoStopConfiguration& autoStop);
nlohmann::json internalToolsSnapshot();
nlohmann::json displaySnapshot(const AppSettings& settings);
/// The same facts as they stand in the caption log.
nlohmann::json displaySnapshotFields(const AppSettings& settings);

/// settings.json of a run: all of the above but the host, and the settings one by one.
nlohmann::json settingsFile(const AppSettings& settings, const nlohmann::json& sections,
                            bool capturesFullDiagnostics);

inline constexpr std::string_view resourceInterference =
    "single-engine live session; perf.csv is process-level and still includes UI/audio/translation";
/// The most rows that the caption window is said to show; kept for tools that compare runs.
inline constexpr int liveSubtitleWindowMaxSegments = 16;

} // namespace tessarune::DiagnosticsRunContext
