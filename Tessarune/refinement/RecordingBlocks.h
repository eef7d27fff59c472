#pragma once

#include "Tessarune/audio/AudioConverter.h"
#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/refinement/FirstAudioOnset.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// A recording read in long blocks of another format, however large it is. One thread at a time;
/// waits for the disk.
class RecordingBlocks {
  public:
    /// Throws MediaFileError, and AudioConversionError as the converter does.
    RecordingBlocks(const OpenMediaFile& open, const MakeAudioConverter& makeConverter,
                    const std::filesystem::path& path, AudioFormat format);

    /// So much sound at most; null at the end. Damage that ends the file early is an end like any
    /// other, and `brokenOff` says why. Throws AudioConversionError.
    AudioBufferPtr next(double seconds);

    /// Sound that was read, in seconds of the file.
    double heardSeconds() const { return heardSeconds_; }
    /// As the container says.
    std::optional<double> duration() const { return file_->duration(); }
    double onsetSeconds() const { return onset_.seconds(); }
    /// Why the file ended before its end; empty if it did not.
    const std::string& brokenOff() const { return brokenOff_; }

  private:
    AudioBufferPtr readFile();

    const std::unique_ptr<MediaFile> file_;
    const std::unique_ptr<AudioConverter> converter_;
    FirstAudioOnset onset_;
    AudioBuffer ready_; ///< converted and not given yet
    bool ended_ = false;
    double heardSeconds_ = 0;
    std::string brokenOff_;
};

} // namespace tessarune
