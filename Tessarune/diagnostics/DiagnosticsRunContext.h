#pragma once

#include "Tessarune/audio/AudioSource.h"
#include "Tessarune/diagnostics/ProcessFigures.h"
#include "Tessarune/session/LiveAudioInactivityAutoStopConfiguration.h"
#include "Tessarune/shell/AppSettings.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

/// Describes the program, the computer and the settings for the files of a run. Main queue.
namespace tessarune::DiagnosticsRunContext {

/// The identity of the program, from the front end.
struct App {
    std::string name;
    std::string version;
    std::string bundlePath; ///< where the program is installed
    std::string executablePath;
};

nlohmann::json appSnapshot(const App& app);
/// Any thread; blocks until the sensors answer, which may take a while.
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
/// The settings of the captions, for records about what is shown.
nlohmann::json displaySnapshotFields(const AppSettings& settings);

/// The content of a run's settings.json, except its field `host`: most of the manifest's
/// `sections`, and settings under their own names.
nlohmann::json settingsFile(const AppSettings& settings, const nlohmann::json& sections,
                            bool capturesFullDiagnostics);

/// A note in the files of a run: what its performance figures include.
inline constexpr std::string_view resourceInterference =
    "single-engine live session; perf.csv is process-level and still includes UI/audio/translation";
/// Reported as the maximum number of rows in the caption window. Tools that compare runs expect
/// this value.
inline constexpr int liveSubtitleWindowMaxSegments = 16;

} // namespace tessarune::DiagnosticsRunContext
