#pragma once

#include "Tessarune/history/AudioExporter.h"
#include "Tessarune/history/HistoryItem.h"
#include "Tessarune/history/HistoryTranscriptExportDocument.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/shell/FileSystem.h"
#include "TessaruneCore/observation/Published.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>

namespace tessarune {

enum class HistoryExportFormat { html, pdf, m4a, srt, vtt, txt };

/// The choices for one export.
struct HistoryExportRequest {
    HistoryItem recording;
    HistoryExportFormat format = HistoryExportFormat::pdf;
    HistoryTranscriptExportContent content = HistoryTranscriptExportContent::bilingual;
};

/// Thrown if there is nothing to export, or if the export fails. The text can be shown.
class HistoryExportError : public std::runtime_error {
  public:
    enum class Kind { noTranscript, noTranslation, noTimes, failed };

    HistoryExportError(Kind kind, const std::string& text)
        : std::runtime_error(text), kind_(kind) {}
    Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

/// Exports recordings, for every front end. Main queue; catalog, disk and exporter must outlive it.
class HistoryExport {
  public:
    HistoryExport(Host& host, RecordingCatalog& catalog, FileSystem& files, AudioExporter& audio,
                  WriteTranscriptPDF pdf);

    /// Writes the file `to`, or the file that it links to. The file appears complete or not at all,
    /// and replaces an existing one. An audio export refuses to replace a file that is created
    /// meanwhile, because nobody was asked about it. Files in the program's own folder are refused.
    /// Throws HistoryExportError, or CancellationError when asked to stop. An audio export can be
    /// stopped and calls `progress` on another queue; the other exports ignore both.
    Task<void> write(HistoryExportRequest request, std::filesystem::path to,
                     MediaProgress progress = {}, std::stop_token stop = {});

    /// Call before the program ends: stops the audio exports, and waits a short time until nothing
    /// is being written. The stopped exports throw HistoryExportError.
    Task<void> end();
    /// The number of files that are being written.
    const Published<int>& unfinishedFiles() const { return unfinishedFiles_; }

    /// The bytes of an export in any format except audio. Throws HistoryExportError.
    Task<std::string> document(HistoryExportRequest request);

    /// The file name, with extension, to use if the user chooses none.
    static std::string suggestedFilename(const HistoryExportRequest& request);
    /// Without the dot, such as "pdf".
    static std::string_view fileExtension(HistoryExportFormat format);
    static std::optional<HistoryExportFormat> formatOf(std::string_view fileExtension);

  private:
    Task<void> writeDocument(HistoryExportRequest request, std::filesystem::path to);
    Task<void> writeAudio(HistoryExportRequest request, std::filesystem::path to,
                          MediaProgress progress, std::stop_token stop);
    std::string documentBytes(const HistoryExportRequest& request);
    HistoryTranscriptExportDocument exportDocument(const HistoryExportRequest& request,
                                                   const HistoryWordTimeline& timeline);
    std::string exportText(const HistoryExportRequest& request);
    HistoryWordTimeline timeline(const HistoryItem& recording);
    static bool isOurM4A(const RecordingMetadata& recording);
    void copyAudio(const std::filesystem::path& from, const std::filesystem::path& to,
                   const MediaProgress& progress, const std::stop_token& stop);
    void runAudioStep(const std::filesystem::path& unfinished, const std::filesystem::path& to,
                      const std::function<void()>& step);

    Host& host_;
    RecordingCatalog& catalog_;
    FileSystem& files_;
    AudioExporter& audio_;
    WriteTranscriptPDF pdf_;
    std::shared_ptr<SerialQueue> queue_;
    Published<int> unfinishedFiles_{0};
    std::stop_source ending_; ///< stopped by `end`
};

} // namespace tessarune
