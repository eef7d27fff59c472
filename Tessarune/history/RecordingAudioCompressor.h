#pragma once

#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/audio/RecordingMetadata.h"
#include "Tessarune/history/AudioExporter.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <memory>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <vector>

namespace tessarune {

class WAVEncoding;

/// Turns WAV recordings into M4As and makes the catalog's entries point to them. Main queue; the
/// encoding happens on queues of its own. A failure leaves the WAV and its entry as they were.
///
/// A running recording is followed: its M4A is made beside the WAV, so that at the end only the
/// last seconds are left. Where that fails, or was not begun, the end encodes the whole WAV.
class RecordingAudioCompressor {
  public:
    class CompressionError : public std::runtime_error {
      public:
        enum class Kind {
            missingSource,
            missingOutput,
            missingOutputSize,
            emptyOutput, ///< history would take it for a session without sound
        };
        CompressionError(Kind kind, const std::string& path);
        Kind kind() const { return kind_; }

      private:
        Kind kind_;
    };

    /// How far the M4A's length may be from the recording's, in seconds: the codec adds a block.
    static constexpr double durationTolerance = 0.5;

    /// Between two looks at what a recording has got.
    static constexpr double followSeconds = 5;
    /// Of what a session left that was cut off, so much is encoded each second: some hundredths of
    /// a core, so that it is in nobody's way.
    static constexpr double leftoverSecondsASecond = 10;

    /// `open` reads back what was written. All references must outlive the compressor.
    RecordingAudioCompressor(Host& host, FileSystem& files, RecordingCatalog& catalog,
                             TessaruneFileLogger& logger, AudioExporter& exporter,
                             OpenMediaFile open, CreateM4A create);

    /// The recording has begun and is to become an M4A, by a later start of the program if need be.
    void follow(const RecordingMetadata& recording);
    /// The recording that is followed stays as it is, or goes.
    void forget();
    /// Compresses, one after the other and slowly, what earlier sessions did not come to.
    void compressLeftovers();

    /// Gives the updated entry. The WAV is removed, if `deleteSource`
    /// asks for it, once the M4A is on the disk, has the recording's length and is in the catalog.
    /// Throws CompressionError, AudioExporter::ExportError, or CancellationError. Resumes on the
    /// main queue.
    Task<RecordingMetadata> compressWAVToM4A(RecordingMetadata recording, bool deleteSource,
                                             MediaProgress progress = {},
                                             std::stop_token stop = {});

  private:
    /// Says to tasks whether the compressor is still there.
    using Alive = std::weak_ptr<const bool>;

    static Task<void> keepUp(Alive alive, RecordingAudioCompressor& self,
                             std::shared_ptr<WAVEncoding> encoding);
    static Task<void> encodeLeftovers(Alive alive, RecordingAudioCompressor& self,
                                      std::vector<RecordingMetadata> recordings);
    Task<bool> finishFollowed(RecordingMetadata recording, MediaProgress progress,
                              std::stop_token stop);
    RecordingMetadata adopt(RecordingMetadata recording, bool deleteSource);
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
    const std::shared_ptr<SerialQueue> queue_; // every WAVEncoding is used there alone
    const std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
    std::shared_ptr<WAVEncoding> followed_;
};

} // namespace tessarune
