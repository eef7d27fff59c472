#pragma once

#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/audio/RecordingMetadata.h"
#include "Tessarune/history/AudioExporter.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/host/Task.h"

#include <stdexcept>
#include <stop_token>
#include <string>

namespace tessarune {

/// Turns a finished WAV recording into an M4A and makes the catalog's entry point to it. Main
/// queue. A failure leaves the WAV and its entry as they were.
class RecordingAudioCompressor {
  public:
    class CompressionError : public std::runtime_error {
      public:
        enum class Kind { missingSource, missingOutput, missingOutputSize };
        CompressionError(Kind kind, const std::string& path);
        Kind kind() const { return kind_; }

      private:
        Kind kind_;
    };

    /// How far the M4A's length may be from the recording's, in seconds: the codec adds a block.
    static constexpr double durationTolerance = 0.5;

    /// `open` reads back what was written. All references must outlive the compressor.
    RecordingAudioCompressor(FileSystem& files, RecordingCatalog& catalog,
                             TessaruneFileLogger& logger, AudioExporter& exporter,
                             OpenMediaFile open);

    /// Gives the updated entry. The WAV is removed, if `deleteSource`
    /// asks for it, once the M4A is on the disk, has the recording's length and is in the catalog.
    /// Throws CompressionError, AudioExporter::ExportError, or CancellationError. Goes on on the
    /// main queue.
    Task<RecordingMetadata> compressWAVToM4A(RecordingMetadata recording, bool deleteSource,
                                             MediaProgress progress = {},
                                             std::stop_token stop = {});

  private:
    std::int64_t checkedSize(const RecordingMetadata& recording,
                             const std::filesystem::path& output);
    bool lastsAsLong(const RecordingMetadata& recording, const std::filesystem::path& output);
    [[noreturn]] void discard(const std::filesystem::path& output, const std::string& why);
    void removeSource(const RecordingMetadata& recording, const std::filesystem::path& source,
                      const std::filesystem::path& destination);

    FileSystem& files_;
    RecordingCatalog& catalog_;
    TessaruneFileLogger& logger_;
    AudioExporter& exporter_;
    OpenMediaFile open_;
};

} // namespace tessarune
