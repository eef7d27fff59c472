#pragma once

#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/audio/WAVHeader.h"
#include "tests/simulation/FaultyFileSystem.h"

#include <memory>
#include <string>

namespace tessarune::simulation {

/// Codecs of a simulated computer: an "M4A" is a text that says how long it is.
class ScriptedMedia {
  public:
    explicit ScriptedMedia(FaultyFileSystem& files) : files_(files) {}

    std::string failure; ///< of the conversion; empty: none

    TranscodeToM4A transcoder() {
        return [this](const std::filesystem::path& from, const std::filesystem::path& to,
                      const MediaProgress& progress, const std::stop_token&) {
            if (!failure.empty())
                throw MediaFileError(MediaFileError::Kind::writeFailed, failure);
            try {
                const std::string sound = files_.read(from);
                const auto header = WAVHeader::decoded(sound);
                if (!header)
                    throw MediaFileError(MediaFileError::Kind::notMedia, from.string());
                if (progress)
                    progress(0.5);
                const double seconds = static_cast<double>(header->dataSize) /
                                       static_cast<double>(header->bytesPerSecond());
                files_.writeAtomically(to, "m4a " + std::to_string(seconds));
            } catch (const std::system_error& error) {
                throw MediaFileError(MediaFileError::Kind::writeFailed, error.what());
            }
        };
    }

    OpenMediaFile opener() {
        return [this](const std::filesystem::path& path) {
            const std::string bytes = files_.contentsOf(path);
            if (!bytes.starts_with("m4a "))
                throw MediaFileError(MediaFileError::Kind::notMedia, path.string());
            return std::make_unique<File>(std::stod(bytes.substr(4)));
        };
    }

  private:
    class File final : public MediaFile {
      public:
        explicit File(double seconds) : seconds_(seconds) {}
        AudioFormat format() const override { return {16000, 1}; }
        std::optional<double> duration() const override { return seconds_; }
        AudioBufferPtr read() override { return nullptr; }

      private:
        double seconds_;
    };

    FaultyFileSystem& files_;
};

} // namespace tessarune::simulation
