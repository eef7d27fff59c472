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

/// The files of a run that are written as a whole. One thread at a time; nothing throws: what
/// cannot be written is missing, and the manifest says so.
class DiagnosticsRunFiles {
  public:
    /// `optionID`: of the recognition option, which names the event log.
    DiagnosticsRunFiles(FileSystem& files, std::filesystem::path directory, std::string optionID,
                        bool isFullRun);

    const std::filesystem::path& directory() const { return directory_; }
    std::filesystem::path path(std::string_view artifact) const;
    bool isFullRun() const { return isFullRun_; }

    /// False where it could not be written.
    bool write(std::string_view artifact, const std::optional<std::string>& bytes);
    bool writeJSON(std::string_view artifact, const nlohmann::json& object);
    /// An empty bilingual text leaves no file.
    void writeTranscripts(const TranscriptSnapshot& snapshot);

    /// What the manifest says of one file, as it is on the disk now.
    nlohmann::json manifestFileEntry(std::string_view artifact);
    nlohmann::json manifestFileEntries();
    /// Replaces the entries of these artifacts in the manifest's list by what is on the disk now.
    void refreshFileEntries(nlohmann::json& manifest, std::span<const char* const> artifacts);
    /// What a refinement has written into the manifest stays in it.
    void writeManifest(nlohmann::json manifest);
    /// Reads the manifest, has it changed and writes it. False where there is none that can be
    /// read. Of those who change a manifest one does so at a time.
    bool changeManifest(const std::function<void(nlohmann::json&)>& change);
    /// Removes the run with all that is in it.
    void remove();
    /// Nothing if there is none that can be read.
    static std::optional<std::string> readManifest(FileSystem& files,
                                                   const std::filesystem::path& directory);

    static nlohmann::json transcriptSummary(const TranscriptSnapshot& snapshot);
    /// The transcript was replaced after the run had finished: brings its files and its manifest
    /// up to date. A run that has been removed stays away.
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
