#pragma once

#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/refinement/HistoryRefinementService.h"
#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/observation/NotificationCenter.h"
#include "TessaruneCore/observation/Published.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

namespace tessarune {

namespace NotificationName {
/// Asks the history to select a recording. The object is its UUID.
inline constexpr std::string_view historyImportSelectRecording = "historyImportSelectRecording";
} // namespace NotificationName

/// Imports audio and video files: copies each into the recordings' folder, adds it to the catalog
/// as if a session had recorded it, and has it transcribed.
///
/// Main queue; copying happens on a queue of utility priority. A file that is unreadable, does not
/// fit on the disk or is cancelled leaves nothing behind. All references must outlive it.
class HistoryImportCoordinator {
  public:
    struct Environment {
        Host& host;
        FileSystem& files;
        RecordingCatalog& catalog;
        TessaruneFileLogger& logger;
        NotificationCenter& notifications;
        AppSettings& settings;
        HistoryRefinementService& refinement;
        OpenMediaFile openMedia;
        /// Whether any recogniser is available.
        std::function<bool()> hasRecogniser = [] { return true; };
    };
    /// A file that was not imported, and why.
    struct Problem {
        std::filesystem::path file;
        std::string text;
    };

    explicit HistoryImportCoordinator(Environment environment);
    /// Cancels a running copy and waits for its end.
    ~HistoryImportCoordinator();
    HistoryImportCoordinator(const HistoryImportCoordinator&) = delete;

    /// Imports the files that a user chose, one by one; their transcripts come later. Asks the
    /// history to select each imported recording. Returns the files that failed.
    Task<std::vector<Problem>> importAudio(std::vector<std::filesystem::path> files,
                                           std::stop_token stop = {});

    /// Imported recordings that wait for their transcript.
    const Published<std::set<UUID>>& transcribingIDs() const { return transcribingIDs_; }
    /// The copied share of the current file, 0 to 1; `nullopt` if there is none.
    const Published<std::optional<double>>& copied() const { return copied_; }

    // The steps of an import

    /// Copies the file and describes the copy. Throws MediaFileError, std::system_error for
    /// failures of the disk, and CancellationError.
    Task<RecordingMetadata> makeRecording(std::filesystem::path source, std::stop_token stop = {});
    /// Adds the copy to the catalog. If the catalog cannot be saved, removes the copy and returns
    /// false.
    bool enter(const RecordingMetadata& recording);
    /// Requests the transcript of a recording, with the chosen recogniser and language.
    void startTranscription(const UUID& recordingID, const std::string& audioPath);

  private:
    RecordingMetadata copy(const std::filesystem::path& source, const UUID& id,
                           const std::stop_token& stop);
    void copyBytes(const std::filesystem::path& source, const std::filesystem::path& to,
                   const std::stop_token& stop);
    std::string read(const std::filesystem::path& source, std::uint64_t from) const;
    void requireSound(const std::filesystem::path& source) const;
    void finished(const UUID& id);
    void removeQuietly(const std::filesystem::path& path) const;

    const Environment environment_;
    const std::shared_ptr<SerialQueue> queue_;
    std::stop_source ending_;
    Published<std::set<UUID>> transcribingIDs_;
    Published<std::optional<double>> copied_;
    const std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); // for posted functions
    NotificationCenter::Observation transcripts_;
    Published<HistoryRefinementService::Jobs>::Token jobs_;
};

} // namespace tessarune
