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

/// Thrown if a sound file cannot be read or written. The text for the user names the file.
class MediaFileError : public std::runtime_error {
  public:
    enum class Kind {
        cannotOpen,   ///< missing, a folder, no permission
        notMedia,     ///< an unknown container
        noAudioTrack, ///< a film without sound, a picture
        unsupported,  ///< an audio track without a decoder, or with impossible properties
        damaged,      ///< only the beginning of the file can be decoded, or its end is missing
        cannotCreate, ///< the destination cannot be opened or started
        writeFailed,
        cancelled,
    };

    MediaFileError(Kind kind, const std::string& text) : std::runtime_error(text), kind_(kind) {}
    Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

/// Interface: a decoded sound file that is read from its beginning, or from any other position, to
/// its end.
///
/// Used by one thread at a time; reading and seeking wait for the disk. Memory does not grow with
/// the file. Skips small damage as players do. Throws `damaged` if nothing more can be decoded. If
/// the file is shorter than its header states, `read` first returns all the sound that there is and
/// then throws `damaged`.
class MediaFile {
  public:
    /// The maximum length of a block from `read`.
    static constexpr std::size_t maximumBlockFrames = 8192;

    virtual ~MediaFile() = default;

    /// The track's own sample rate and channels; the same for all blocks.
    virtual AudioFormat format() const = 0;
    /// Seconds, as the container states or estimates; `nullopt` if unknown.
    virtual std::optional<double> duration() const = 0;
    /// The next block, or null at the end. Never empty. Throws MediaFileError; after that and after
    /// the end it returns null.
    virtual AudioBufferPtr read() = 0;
    /// Makes the next `read` begin at `seconds`, exact to the sample if the container has
    /// timestamps; beyond the end, `read` returns null. Also works after the end and after a
    /// failure. Throws MediaFileError, `unsupported` if seeking is impossible, as in a pipe.
    virtual void seek(double /*seconds*/) {
        throw MediaFileError(MediaFileError::Kind::unsupported,
                             "seeking is not possible in this sound");
    }
};

/// Opens the first audio track of a file. Throws MediaFileError.
using OpenMediaFile = std::function<std::unique_ptr<MediaFile>(const std::filesystem::path& path)>;

/// Like `OpenMediaFile`, but waits for the writer of a pipe. The path "-" is the standard input. A
/// stop request ends a wait in opening or reading: the operation throws `cancelled`.
using OpenAwaitedMediaFile = std::function<std::unique_ptr<MediaFile>(
    const std::filesystem::path& path, std::stop_token stop)>;

/// The progress of a conversion: 0 to 1. Called on the converting thread, in small steps.
using MediaProgress = std::function<void(double fraction)>;

/// The format of compressed recordings.
struct M4A {
    static constexpr const char* audioFormat = "m4a/aac"; ///< in the catalog
    static constexpr int sampleRate = 16000;
    static constexpr int channels = 1;
    static constexpr int bitRate = 32000; ///< bits per second
};

/// Interface: an M4A that is encoded piece by piece, in the format `M4A`. It has a temporary name
/// until it is complete; the destructor removes an unfinished file.
///
/// Used by one thread at a time; waits for the disk. Operations throw MediaFileError; after that,
/// the object is unusable. The container's index takes a few MB of memory per hour of sound.
class M4AFile {
  public:
    virtual ~M4AFile() = default;

    /// Adds sound of the format that the file was created for.
    virtual void append(const AudioBuffer& sound) = 0;
    /// Completes the file on the disk and gives it its final name.
    virtual void finish() = 0;
};

/// Begins the M4A `to` for sound of the format `from`. Throws MediaFileError.
using CreateM4A =
    std::function<std::unique_ptr<M4AFile>(const std::filesystem::path& to, AudioFormat from)>;

/// Decodes `from` and writes it to `to` as M4A: AAC, 16000 Hz, one channel, 32000 bits per second.
/// Blocks until it is done. After a failure or a stop request, removes the unfinished `to` and
/// throws MediaFileError.
using TranscodeToM4A =
    std::function<void(const std::filesystem::path& from, const std::filesystem::path& to,
                       const MediaProgress& progress, std::stop_token stop)>;

} // namespace tessarune
