#pragma once

#include "Tessarune/audio/AudioBuffer.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>

namespace tessarune {

/// Why a file of sound cannot be read or written. The text names the file and can be shown.
class MediaFileError : public std::runtime_error {
  public:
    enum class Kind {
        cannotOpen,   ///< missing, a folder, no permission
        notMedia,     ///< no container that is known
        noAudioTrack, ///< a film without sound, a picture
        unsupported,  ///< a known track without a decoder here, or with impossible properties
        damaged,      ///< it began well, and then nothing more could be made of it
        cannotCreate, ///< the destination cannot be opened or begun
        writeFailed,
        cancelled,
    };

    MediaFileError(Kind kind, const std::string& text) : std::runtime_error(text), kind_(kind) {}
    Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

/// Seam: a file of sound that is read from its beginning, or from any other place, to its end,
/// decoded.
///
/// Used by one thread at a time; reading and seeking wait for the disk. Memory does not grow with
/// the file. Skips small damage as players do; throws `damaged` where nothing more can be
/// decoded.
class MediaFile {
  public:
    /// The longest block that `read` gives.
    static constexpr std::size_t maximumBlockFrames = 8192;

    virtual ~MediaFile() = default;

    /// The track's own sample rate and channels; the same for all blocks.
    virtual AudioFormat format() const = 0;
    /// Seconds, as the container says or estimates; nothing if it does not know.
    virtual std::optional<double> duration() const = 0;
    /// The next block, or null at the end. Never empty. Throws MediaFileError; after that and after
    /// the end it gives null.
    virtual AudioBufferPtr read() = 0;
    /// The next `read` begins with the sound that is heard `seconds` after the beginning, to the
    /// sample where the container tells times; beyond the end it gives null. Also after the end and
    /// after a failure. Throws MediaFileError: `unsupported` where there is no going back, as in a
    /// pipe.
    virtual void seek(double /*seconds*/) {
        throw MediaFileError(MediaFileError::Kind::unsupported, "this sound cannot be sought");
    }
};

/// Opens the first audio track of a file. Throws MediaFileError.
using OpenMediaFile = std::function<std::unique_ptr<MediaFile>(const std::filesystem::path& path)>;

/// As `OpenMediaFile`, for what may have to be waited for: a pipe into which nobody writes yet. "-"
/// is the standard input. A request to stop ends the wait, while it opens and while the file is
/// read, with `cancelled`.
using OpenAwaitedMediaFile = std::function<std::unique_ptr<MediaFile>(
    const std::filesystem::path& path, std::stop_token stop)>;

/// How far a conversion has come: 0 to 1. Called on the converting thread, a few times a second.
using MediaProgress = std::function<void(double fraction)>;

/// What compressed recordings are.
struct M4A {
    static constexpr const char* audioFormat = "m4a/aac"; ///< in the catalog
    static constexpr int sampleRate = 16000;
    static constexpr int channels = 1;
    static constexpr int bitRate = 32000; ///< bits a second
};

/// Seam: an M4A that is encoded piece by piece, as `M4A` says. Nothing has its name until it is
/// whole: it is written beside it, and what was not finished is removed with the object.
///
/// Used by one thread at a time; waits for the disk. Operations throw MediaFileError; the file is
/// useless after that. Memory grows by some MB for an hour of sound, the container's index.
class M4AFile {
  public:
    virtual ~M4AFile() = default;

    /// Sound of the format that the file was created for.
    virtual void append(const AudioBuffer& sound) = 0;
    /// The file is whole and on the disk, and has its name.
    virtual void finish() = 0;
};

/// Begins the M4A `to` for sound of the format `from`. Throws MediaFileError.
using CreateM4A =
    std::function<std::unique_ptr<M4AFile>(const std::filesystem::path& to, AudioFormat from)>;

/// Decodes `from` and writes it to `to` as M4A: AAC, 16000 Hz, one channel, 32000 bits a second.
/// Blocks until it is done. A failure or a request to stop removes what was written of `to` and
/// throws MediaFileError.
using TranscodeToM4A =
    std::function<void(const std::filesystem::path& from, const std::filesystem::path& to,
                       const MediaProgress& progress, std::stop_token stop)>;

} // namespace tessarune
