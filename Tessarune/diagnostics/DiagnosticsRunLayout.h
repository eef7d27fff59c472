#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The table of the files of a diagnostics run. Manifests take their descriptions from it, and
/// docs/diagnostics.md is generated from it. Pure functions.
namespace tessarune::DiagnosticsRunLayout {

inline constexpr std::int64_t schemaVersion = 3;
inline constexpr std::string_view fullKind = "liveSessionDiagnosticsManifest";
inline constexpr std::string_view coreKind = "liveSessionCoreDiagnosticsManifest";
inline constexpr std::string_view runNamePrefix = "Live-";
inline constexpr std::string_view manifestFile = "manifest.json";

/// The subject of a file.
enum class Content {
    settings,
    lifecycle,
    captions,
    recognition,
    translation,
    display,
    performance,
    idle,
    refinement,
    report,
};

struct Artifact {
    std::string_view name; ///< in the manifest
    std::string_view path; ///< relative to the run; "<option>" stands for the recognition option
    Content content = Content::settings;
    std::string_view condition = {}; ///< needed besides the diagnostics level; empty: none
    bool isInCoreRuns = false;
    bool isListed = true;     ///< in the manifest
    std::string_view written; ///< when it is written
    std::string_view description;
    /// Whether the file may contain spoken text.
    bool holdsText = true;
};

/// One field of a file's object, record or table, or several fields that belong together.
struct Field {
    std::string_view names; ///< separated by commas
    std::string_view meaning;
    /// The name of the group that lists the nested fields; `anything`: the nested fields are not
    /// listed; empty: there are none.
    std::string_view members = {};
};
inline constexpr std::string_view anything = "*";

/// All artifacts, in the order of a manifest.
const std::vector<Artifact>& artifacts();
/// Throws std::out_of_range for an unknown name.
const Artifact& artifact(std::string_view name);

/// The fields of the file of an artifact, or of a group that several files share; empty for a file
/// that is plain text.
const std::vector<Field>& fields(std::string_view artifactOrGroup);
/// The groups, in the order in which they are explained.
const std::vector<std::string_view>& groups();

/// The path of the file, relative to a run with this recognition option.
std::string path(const Artifact& artifact, std::string_view optionID);
/// The description of the file in the manifest.
std::string_view description(const Artifact& artifact, bool isFullRun);

} // namespace tessarune::DiagnosticsRunLayout
