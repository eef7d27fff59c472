#pragma once

#include "Tessarune/session/TranscriptSnapshot.h"
#include "Tessarune/shell/FileSystem.h"

#include <nlohmann/json_fwd.hpp>

#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tessarune {

/// Writes the files of a run, except its logs. One thread at a time. Failures of the disk are not
/// thrown: a file that cannot be written is missing or keeps its former content. The
/// manifest says which files exist.
class DiagnosticsRunFiles {
  public:
    /// `optionID`: the ID of the recognition option, after which the event log is named.
    DiagnosticsRunFiles(FileSystem& files, std::filesystem::path directory, std::string optionID,
                        bool isFullRun);

    const std::filesystem::path& directory() const { return directory_; }
    std::filesystem::path path(std::string_view artifact) const;
    bool isFullRun() const { return isFullRun_; }

    /// Return whether the file was written. Absent bytes are not written.
    bool write(std::string_view artifact, const std::optional<std::string>& bytes);
    bool writeJSON(std::string_view artifact, const nlohmann::json& object);
    /// Writes the source and the bilingual text. Removes the bilingual file if its text is empty.
    void writeTranscripts(const TranscriptSnapshot& snapshot);

    /// The manifest's entry for a file, from the current state of the disk.
    nlohmann::json manifestFileEntry(std::string_view artifact);
    nlohmann::json manifestFileEntries();
    /// Updates the entries of these artifacts in the manifest from the current state of the disk.
    void refreshFileEntries(nlohmann::json& manifest, std::span<const char* const> artifacts);
    /// Replaces the manifest. Keeps the section about a refinement, if the former manifest has one.
    void writeManifest(nlohmann::json manifest);
    /// Reads the manifest, applies `change` and writes it. Returns false if there is no readable
    /// manifest. Waits while another thread changes a manifest, even through another object.
    bool changeManifest(const std::function<void(nlohmann::json&)>& change);
    /// Removes the run with all its files.
    void remove();
    /// Returns `nullopt` if there is no readable manifest.
    static std::optional<std::string> readManifest(FileSystem& files,
                                                   const std::filesystem::path& directory);

    static nlohmann::json transcriptSummary(const TranscriptSnapshot& snapshot);
    /// Updates the texts and the manifest of a finished run after the transcript was replaced. Does
    /// not recreate a run that has been removed.
    static void refreshManifestTranscriptSummary(FileSystem& files,
                                                 const std::filesystem::path& directory,
                                                 const TranscriptSnapshot& snapshot,
                                                 double wallClock);

  private:
    void replaceManifest(const nlohmann::json& manifest);
    void removeArtifact(std::string_view artifact);
    bool writeFile(const std::filesystem::path& path, const std::optional<std::string>& bytes);

    FileSystem& files_;
    const std::filesystem::path directory_;
    const std::string optionID_;
    const bool isFullRun_;
};

} // namespace tessarune
