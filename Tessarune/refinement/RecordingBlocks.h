#pragma once

#include "Tessarune/audio/AudioConverter.h"
#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/refinement/FirstAudioOnset.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// Reads a recording of any size in long blocks, converted to another format. One thread at a time;
/// waits for the disk.
class RecordingBlocks {
  public:
    /// Throws MediaFileError and AudioConversionError.
    RecordingBlocks(const OpenMediaFile& open, const MakeAudioConverter& makeConverter,
                    const std::filesystem::path& path, AudioFormat format);

    /// Returns at most `seconds` of sound, or null at the end. Damage ends the sound early;
    /// `brokenOff` then states the reason. Throws AudioConversionError.
    AudioBufferPtr next(double seconds);

    /// The length of the sound that was read so far, in seconds.
    double heardSeconds() const { return heardSeconds_; }
    /// The duration that the container states.
    std::optional<double> duration() const { return file_->duration(); }
    /// When the recording is first loud; see FirstAudioOnset.
    double onsetSeconds() const { return onset_.seconds(); }
    /// Why the file ended early; empty if it did not.
    const std::string& brokenOff() const { return brokenOff_; }

  private:
    AudioBufferPtr readFile();

    const std::unique_ptr<MediaFile> file_;
    const std::unique_ptr<AudioConverter> converter_;
    FirstAudioOnset onset_;
    AudioBuffer ready_; ///< converted but not returned yet
    bool ended_ = false;
    double heardSeconds_ = 0;
    std::string brokenOff_;
};

} // namespace tessarune
