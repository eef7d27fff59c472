#pragma once

#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/audio/WAVHeader.h"
#include "Tessarune/shell/FileSystem.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stop_token>
#include <string>

namespace tessarune {

/// Encodes a recording's WAV as M4A piece by piece, even while the WAV is being written: the WAV
/// buffers the sound, so a slow encoder loses nothing.
///
/// Used by one thread at a time; waits for the disk. Never throws: after a failure it does nothing,
/// and its output is removed.
class WAVEncoding {
  public:
    /// `files` must outlive it.
    WAVEncoding(FileSystem& files, CreateM4A create, std::filesystem::path wav,
                std::filesystem::path m4a)
        : files_(files), create_(std::move(create)), wav_(std::move(wav)), m4a_(std::move(m4a)) {}

    const std::filesystem::path& source() const { return wav_; }
    /// The text of the failure; empty if there was none.
    const std::string& failure() const { return failure_; }

    /// For a growing WAV: encodes the new sound, at most `maximumSeconds` of it. Leaves out the
    /// last second of the file, which may be the remains of a failed write.
    void follow(double maximumSeconds);
    /// For a closed WAV: encodes up to `seconds` more. True once everything is encoded.
    bool advance(double seconds);
    /// Encodes the remainder of a closed WAV and gives the M4A its name. False after a failure, or
    /// when asked to stop.
    bool finish(const MediaProgress& progress = {}, const std::stop_token& stop = {});
    /// Removes the unfinished output.
    void abandon() { file_.reset(); }

  private:
    template <typename Step>
    void attempt(Step step);
    bool open();
    std::uint64_t soundBytes();
    void encode(std::uint64_t until);

    FileSystem& files_;
    const CreateM4A create_;
    const std::filesystem::path wav_;
    const std::filesystem::path m4a_;
    WAVHeader header_;              // as it was at the beginning
    std::unique_ptr<M4AFile> file_; // created once the WAV has a header
    std::uint64_t encoded_ = 0;     // bytes of sound
    std::string failure_;
};

} // namespace tessarune
