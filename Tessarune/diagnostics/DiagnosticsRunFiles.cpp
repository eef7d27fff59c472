#include "Tessarune/diagnostics/DiagnosticsRunFiles.h"

#include "Tessarune/diagnostics/DiagnosticsRunLayout.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/host/Mutex.h"
#include "TessaruneCore/text/JSON.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace tessarune {

namespace Layout = DiagnosticsRunLayout;
using RunJson = JSON::Value;

DiagnosticsRunFiles::DiagnosticsRunFiles(FileSystem& files, std::filesystem::path directory,
                                         std::string optionID, bool isFullRun)
    : files_(files),
      directory_(std::move(directory)),
      optionID_(std::move(optionID)),
      isFullRun_(isFullRun) {}

std::filesystem::path DiagnosticsRunFiles::path(std::string_view artifact) const {
    return directory_ / Layout::path(Layout::artifact(artifact), optionID_);
}

bool DiagnosticsRunFiles::write(std::string_view artifact,
                                const std::optional<std::string>& bytes) {
    return writeFile(path(artifact), bytes);
}

bool DiagnosticsRunFiles::writeJSON(std::string_view artifact, const RunJson& object) {
    return write(artifact, JSON::pretty(object));
}

void DiagnosticsRunFiles::writeTranscripts(const TranscriptSnapshot& snapshot) {
    write("transcript", snapshot.sourceText);
    if (!snapshot.bilingualText.empty())
        write("bilingualTranscript", snapshot.bilingualText);
    else
        removeArtifact("bilingualTranscript");
}

/// Session and refinement write the same manifest, each on its own queue.
static Mutex& manifestMutex() {
    static Mutex mutex;
    return mutex;
}

void DiagnosticsRunFiles::writeManifest(RunJson manifest) {
    constexpr const char* refinementKey = "refinementDiagnostics";
    const MutexLock lock(manifestMutex());
    const RunJson former = JSON::parse(readManifest(files_, directory_).value_or(""));
    if (former.is_object() && former.contains(refinementKey) && !manifest.contains(refinementKey))
        manifest[refinementKey] = former[refinementKey];
    replaceManifest(manifest);
}

void DiagnosticsRunFiles::replaceManifest(const RunJson& manifest) {
    writeFile(directory_ / Layout::manifestFile, JSON::pretty(manifest));
}

bool DiagnosticsRunFiles::writeFile(const std::filesystem::path& path,
                                    const std::optional<std::string>& bytes) {
    if (!bytes)
        return false;
    try {
        files_.writeAtomically(path, *bytes);
        return true;
    } catch (const std::system_error& error) {
        if (!files_.exists(directory_))
            return false; // the user has deleted the recording, and the run with it
        const std::string text = error.what();
        TessaruneLog::diagnostics.fault(
            [&] { return "Tessarune diagnostics could not write: " + text; });
        return false;
    }
}

void DiagnosticsRunFiles::removeArtifact(std::string_view artifact) {
    try {
        files_.remove(path(artifact));
    } catch (const std::system_error&) { // the manifest says that it still exists
    }
}

RunJson DiagnosticsRunFiles::manifestFileEntry(std::string_view artifact) {
    const Layout::Artifact& details = Layout::artifact(artifact);
    const std::string relative = Layout::path(details, optionID_);
    RunJson entry{{"name", details.name},
                  {"path", relative},
                  {"description", Layout::description(details, isFullRun_)},
                  {"exists", files_.exists(directory_ / relative)}};
    try {
        entry["bytes"] = files_.size(directory_ / relative);
    } catch (const std::system_error&) { // the entry has no size
    }
    return entry;
}

RunJson DiagnosticsRunFiles::manifestFileEntries() {
    RunJson entries = RunJson::array();
    for (const Layout::Artifact& artifact : Layout::artifacts()) {
        if (artifact.isListed && (isFullRun_ || artifact.isInCoreRuns))
            entries.push_back(manifestFileEntry(artifact.name));
    }
    return entries;
}

void DiagnosticsRunFiles::refreshFileEntries(RunJson& manifest,
                                             std::span<const char* const> artifacts) {
    for (RunJson& entry : manifest["files"]) {
        const auto name = JSON::member<std::string>(entry, "name");
        if (name && std::ranges::find(artifacts, *name) != artifacts.end())
            entry = manifestFileEntry(*name);
    }
}

bool DiagnosticsRunFiles::changeManifest(const std::function<void(RunJson&)>& change) {
    const MutexLock lock(manifestMutex());
    RunJson manifest = JSON::parse(readManifest(files_, directory_).value_or(""));
    if (!manifest.is_object())
        return false;
    for (const char* section : {"lostRecords", "summary"}) { // the user may have edited them
        if (const auto found = manifest.find(section);
            found != manifest.end() && !found->is_object())
            *found = RunJson::object();
    }
    change(manifest);
    replaceManifest(manifest);
    return true;
}

void DiagnosticsRunFiles::remove() {
    try {
        files_.remove(directory_);
    } catch (const std::system_error&) { // pruning tries again
    }
}

std::optional<std::string>
DiagnosticsRunFiles::readManifest(FileSystem& files, const std::filesystem::path& directory) {
    try {
        return files.read(directory / Layout::manifestFile);
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

RunJson DiagnosticsRunFiles::transcriptSummary(const TranscriptSnapshot& snapshot) {
    return {{"transcriptCharacters", Text::length(snapshot.sourceText)},
            {"bilingualTranscriptCharacters", Text::length(snapshot.bilingualText)},
            {"hasBilingualTranscript", !snapshot.bilingualText.empty()}};
}

void DiagnosticsRunFiles::refreshManifestTranscriptSummary(FileSystem& files,
                                                           const std::filesystem::path& directory,
                                                           const TranscriptSnapshot& snapshot,
                                                           double wallClock) {
    constexpr const char* texts[] = {"transcript", "bilingualTranscript"};
    DiagnosticsRunFiles run(files, directory, {}, true);
    run.changeManifest([&](RunJson& manifest) {
        if (JSON::member<std::string>(manifest, "kind") != Layout::fullKind)
            return; // a core run never holds texts
        run.writeTranscripts(snapshot);
        RunJson& summary = manifest["summary"];
        summary.update(transcriptSummary(snapshot));
        summary["transcriptUpdatedAfterFinishWall"] = wallClock;
        run.refreshFileEntries(manifest, texts);
    });
}

} // namespace tessarune
