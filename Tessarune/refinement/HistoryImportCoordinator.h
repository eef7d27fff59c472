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
/// The history is to select this recording. The object is its UUID.
inline constexpr std::string_view historyImportSelectRecording = "historyImportSelectRecording";
} // namespace NotificationName

/// Takes files of sound or film into the history: copies each into the recordings' folder, enters
/// it into the catalog as if a session had recorded it, and has it transcribed.
///
/// Main queue; copying happens on a queue of utility priority. What cannot be read as sound, does
/// not fit the disk or is given up leaves nothing behind. All references must outlive it.
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
        /// Whether there is anything that could transcribe.
        std::function<bool()> hasRecogniser = [] { return true; };
    };
    /// A file that was not imported, and why.
    struct Problem {
        std::filesystem::path file;
        std::string text;
    };

    explicit HistoryImportCoordinator(Environment environment);
    /// A copy that is being made is given up.
    ~HistoryImportCoordinator();
    HistoryImportCoordinator(const HistoryImportCoordinator&) = delete;

    /// All of it for files that a user chose, one after the other; their transcripts come later.
    /// Each that is imported is selected. Resumes with those that are not.
    Task<std::vector<Problem>> importAudio(std::vector<std::filesystem::path> files,
                                           std::stop_token stop = {});

    /// Imported recordings that wait for their transcript.
    const Published<std::set<UUID>>& transcribingIDs() const { return transcribingIDs_; }
    /// How much of the file that is being copied is there, 0 to 1; nothing while none is.
    const Published<std::optional<double>>& copied() const { return copied_; }

    // The steps of it

    /// Copies the file and describes the copy. Throws MediaFileError, std::system_error for what
    /// the disk does not do, and CancellationError.
    Task<RecordingMetadata> makeRecording(std::filesystem::path source, std::stop_token stop = {});
    /// Enters the copy into the catalog; false, and the copy is removed, if that cannot be saved.
    bool enter(const RecordingMetadata& recording);
    /// Asks for its transcript with the chosen recogniser and language.
    void startTranscription(const UUID& recordingID, const std::string& audioPath);

  private:
    RecordingMetadata copy(const std::filesystem::path& source, const UUID& id,
                           const std::stop_token& stop);
    void copyBytes(const std::filesystem::path& source, const std::filesystem::path& to,
                   const std::stop_token& stop);
    void requireSound(const std::filesystem::path& source) const;
    void finished(const UUID& id);
    void removeQuietly(const std::filesystem::path& path) const;

    const Environment environment_;
    const std::shared_ptr<SerialQueue> queue_;
    std::stop_source ending_;
    Published<std::set<UUID>> transcribingIDs_;
    Published<std::optional<double>> copied_;
    const std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); // for what is posted here
    NotificationCenter::Observation transcripts_;
    Published<HistoryRefinementService::Jobs>::Token jobs_;
};

} // namespace tessarune
