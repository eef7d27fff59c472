#pragma once

#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/audio/RecordingMetadata.h"
#include "Tessarune/history/AudioExporter.h"
#include "Tessarune/history/DataFolderHold.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <vector>

namespace tessarune {

class WAVEncoding;

/// Turns WAV recordings into M4As and makes the catalog's entries point to them. Main queue; the
/// encoding happens on queues of its own. After a failure the WAV is still there.
///
/// During a recording the M4A grows beside the WAV, so that only the last seconds remain to be
/// encoded at the end. If this encoding failed or never began, the entire WAV is encoded at the
/// end.
class RecordingAudioCompressor {
  public:
    class CompressionError : public std::runtime_error {
      public:
        enum class Kind {
            missingSource,
            missingOutput,
            missingOutputSize,
            emptyOutput, ///< too small to contain sound; the history would not list it
        };
        CompressionError(Kind kind, const std::string& path);
        Kind kind() const { return kind_; }

      private:
        Kind kind_;
    };

    /// How far the M4A's length may be from the recording's, in seconds: the codec adds a block.
    static constexpr double durationTolerance = 0.5;

    /// Seconds between two steps that encode the growing recording.
    static constexpr double followSeconds = 5;
    /// Seconds of sound of an earlier session that are encoded each second. This takes a few
    /// hundredths of a core, so that nothing else is slowed down.
    static constexpr double leftoverSecondsASecond = 10;

    /// If the program has ended unexpectedly this many times while it compressed a recording, the
    /// recording may be the cause and is not compressed again. A single unexpected end may have
    /// been a power failure.
    static constexpr std::size_t mostAttempts = 2;

    /// `open` reads back what was written. All references must outlive the compressor.
    RecordingAudioCompressor(Host& host, FileSystem& files, RecordingCatalog& catalog,
                             TessaruneFileLogger& logger, AudioExporter& exporter,
                             OpenMediaFile open, CreateM4A create);
    ~RecordingAudioCompressor();
    RecordingAudioCompressor(const RecordingAudioCompressor&) = delete;

    /// Starts to encode the recording while it grows, and marks it for compression: if the program
    /// ends before the M4A is complete, a later launch encodes the WAV.
    void follow(const RecordingMetadata& recording);
    /// Stops following the recording and removes the M4A that `follow` began.
    void forget();
    /// Compresses the recordings that earlier sessions left uncompressed, one by one and slowly.
    /// Keeps `hold` until the last one is done.
    void compressLeftovers(DataFolderHold hold = {});
    /// Call before a regular end of the program that skips the destructor. Otherwise the next
    /// launch would blame a running compression of a leftover for an unexpected end.
    void endLeftover();

    /// Encodes the WAV and returns the updated entry. If `deleteSource` is set, removes the WAV
    /// once the M4A is on the disk, has the recording's length and is in the catalog. Throws
    /// CompressionError, AudioExporter::ExportError, or CancellationError. Resumes on the main
    /// queue.
    Task<RecordingMetadata> compressWAVToM4A(RecordingMetadata recording, bool deleteSource,
                                             MediaProgress progress = {},
                                             std::stop_token stop = {});

  private:
    /// Expires when the compressor is destroyed; tasks check it.
    using Alive = std::weak_ptr<const bool>;

    static Task<void> keepUp(Alive alive, RecordingAudioCompressor& self,
                             std::shared_ptr<WAVEncoding> encoding);
    static Task<void> encodeLeftovers(Alive alive, RecordingAudioCompressor& self,
                                      std::vector<RecordingMetadata> recordings,
                                      DataFolderHold hold);
    Task<bool> finishFollowed(RecordingMetadata recording, MediaProgress progress,
                              std::stop_token stop);
    RecordingMetadata adopt(RecordingMetadata recording, bool deleteSource);
    bool beginLeftover(const UUID& recording);
    void logBackgroundFailure(const RecordingMetadata& recording, const std::string& error);
    std::int64_t checkedSize(const RecordingMetadata& recording,
                             const std::filesystem::path& output);
    bool lastsAsLong(const RecordingMetadata& recording, const std::filesystem::path& output);
    [[noreturn]] void discard(const std::filesystem::path& output, const std::string& why);
    void removeOutput(const std::filesystem::path& output);
    void removeSource(const RecordingMetadata& recording, const std::filesystem::path& source,
                      const std::filesystem::path& destination);

    Host& host_;
    FileSystem& files_;
    RecordingCatalog& catalog_;
    TessaruneFileLogger& logger_;
    AudioExporter& exporter_;
    OpenMediaFile open_;
    CreateM4A create_;
    const std::shared_ptr<SerialQueue> queue_; // the only queue that uses a WAVEncoding
    const std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
    std::shared_ptr<WAVEncoding> followed_;
    std::optional<UUID> leftover_; // the leftover that is being compressed
};

} // namespace tessarune
