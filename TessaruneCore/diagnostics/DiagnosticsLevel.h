#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// How much the program logs and records for diagnosis; raw values rise with verbosity.
enum class DiagnosticsLevel { off = 0, core = 1, standard = 2, verbose = 3, trace = 4 };

/// Whether a session writes a diagnostics run, even if only a minimal one.
constexpr bool writesCoreSessionRun(DiagnosticsLevel level) {
    return level > DiagnosticsLevel::off;
}
/// Whether a session's diagnostics run is a full one.
constexpr bool writesSessionDiagnostics(DiagnosticsLevel level) {
    return level > DiagnosticsLevel::core;
}
/// Whether the runtime log gets routine events.
constexpr bool writesRoutineBreadcrumbs(DiagnosticsLevel level) {
    return level > DiagnosticsLevel::standard;
}
/// Whether `detail` of the level mentions the recogniser's full raw results. A full run keeps them,
/// whatever its level, if the setting `appleAnalyzerDiagnosticsMode` is `fullRaw`.
constexpr bool expandsAppleRaw(DiagnosticsLevel level) {
    return level > DiagnosticsLevel::verbose;
}

/// The level's name in settings and manifests.
std::string_view storageName(DiagnosticsLevel level);
/// `nullopt` for an unknown name.
std::optional<DiagnosticsLevel> diagnosticsLevel(std::string_view storageName);
/// The localised description of the level.
std::string detail(DiagnosticsLevel level);

} // namespace tessarune
