#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What a diagnostics run consists of: the one table from which manifests take their descriptions
/// and docs/diagnostics.md is made. Pure.
namespace tessarune::DiagnosticsRunLayout {

inline constexpr std::int64_t schemaVersion = 3;
inline constexpr std::string_view fullKind = "liveSessionDiagnosticsManifest";
inline constexpr std::string_view coreKind = "liveSessionCoreDiagnosticsManifest";
inline constexpr std::string_view runNamePrefix = "Live-";
inline constexpr std::string_view manifestFile = "manifest.json";

/// What a file is about.
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
    std::string_view path; ///< in the run; "<option>" stands for the recognition option
    Content content = Content::settings;
    std::string_view condition = {}; ///< beside the level; empty: none
    bool isInCoreRuns = false;
    bool isListed = true;     ///< in the manifest
    std::string_view written; ///< when
    std::string_view description;
    /// Whether the file may hold what was said.
    bool holdsText = true;
};

/// A member of a file's object, record or table, or several that belong together.
struct Field {
    std::string_view names; ///< separated by commas
    std::string_view meaning;
    /// Where its own members are listed: a group's name, or `anything`. Empty: it has none.
    std::string_view members = {};
};
inline constexpr std::string_view anything = "*";

/// In the order of a manifest.
const std::vector<Artifact>& artifacts();
const Artifact& artifact(std::string_view name);

/// The members of an artifact's file, by the artifact's name, or of a group that several files
/// share; empty for a file that is plain text.
const std::vector<Field>& fields(std::string_view artifactOrGroup);
/// The groups, in the order in which they are explained.
const std::vector<std::string_view>& groups();

/// Where the file lies in a run of this recognition option.
std::string path(const Artifact& artifact, std::string_view optionID);
/// What the manifest of such a run says of it.
std::string_view description(const Artifact& artifact, bool isFullRun);

} // namespace tessarune::DiagnosticsRunLayout
