#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What a diagnostics run consists of: the one table from which manifests take their descriptions.
/// Pure.
namespace tessarune::DiagnosticsRunLayout {

inline constexpr std::int64_t schemaVersion = 3;
inline constexpr std::string_view fullKind = "liveSessionDiagnosticsManifest";
inline constexpr std::string_view coreKind = "liveSessionCoreDiagnosticsManifest";
inline constexpr std::string_view runNamePrefix = "Live-";
inline constexpr std::string_view manifestFile = "manifest.json";

struct Artifact {
    std::string_view name; ///< in the manifest
    std::string_view path; ///< in the run; "<option>" stands for the recognition option
    bool isInCoreRuns = false;
    std::string_view written; ///< when
    std::string_view description;
    /// Whether the file may hold what was said.
    bool holdsText = true;
};

/// In the order of a manifest.
const std::vector<Artifact>& artifacts();
const Artifact& artifact(std::string_view name);

/// Where the file lies in a run of this recognition option.
std::string path(const Artifact& artifact, std::string_view optionID);
/// What the manifest of such a run says of it.
std::string_view description(const Artifact& artifact, bool isFullRun);

} // namespace tessarune::DiagnosticsRunLayout
