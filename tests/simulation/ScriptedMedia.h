#pragma once

#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/audio/WAVHeader.h"
#include "tests/simulation/FaultyFileSystem.h"

#include <memory>
#include <string>

namespace tessarune::simulation {

/// A file that has a duration and no sound.
class SilentFile final : public MediaFile {
  public:
    explicit SilentFile(double seconds) : seconds_(seconds) {}
    AudioFormat format() const override { return {16000, 1}; }
    std::optional<double> duration() const override { return seconds_; }
    AudioBufferPtr read() override { return nullptr; }

  private:
    double seconds_;
};

/// The codecs of a simulated computer: an "M4A" is a text that states its duration.
class ScriptedMedia {
  public:
    explicit ScriptedMedia(FaultyFileSystem& files) : files_(files) {}

    std::string failure;       ///< of each encoder; empty: none
    std::size_t bytes = 20000; ///< of an M4A; large enough not to be regarded as empty
    int transcodings = 0;      ///< of whole files

    TranscodeToM4A transcoder() {
        return [this](const std::filesystem::path& from, const std::filesystem::path& to,
                      const MediaProgress& progress, const std::stop_token&) {
            if (!failure.empty())
                throw MediaFileError(MediaFileError::Kind::writeFailed, failure);
            ++transcodings;
            try {
                const std::string sound = files_.read(from);
                const auto header = WAVHeader::decoded(sound);
                if (!header)
                    throw MediaFileError(MediaFileError::Kind::notMedia, from.string());
                if (progress)
                    progress(0.5);
                const double seconds = static_cast<double>(header->dataSize) /
                                       static_cast<double>(header->bytesPerSecond());
                files_.writeAtomically(to, content(seconds));
            } catch (const std::system_error& error) {
                throw MediaFileError(MediaFileError::Kind::writeFailed, error.what());
            }
        };
    }

    CreateM4A creator() {
        return [this](const std::filesystem::path& to, AudioFormat from) {
            return std::make_unique<Growing>(*this, to, from.sampleRate);
        };
    }

    OpenMediaFile opener() {
        return [this](const std::filesystem::path& path) {
            const std::string media = files_.contentsOf(path);
            if (!media.starts_with("m4a "))
                throw MediaFileError(MediaFileError::Kind::notMedia, path.string());
            return std::make_unique<SilentFile>(std::stod(media.substr(4)));
        };
    }

  private:
    /// An M4A that grows with its sound; it has a temporary name until it is complete.
    class Growing final : public M4AFile {
      public:
        Growing(ScriptedMedia& media, std::filesystem::path to, double sampleRate)
            : media_(media), to_(std::move(to)), sampleRate_(sampleRate) {
            writing([&] { media_.files_.writeAtomically(part(), ""); });
        }
        ~Growing() override {
            try {
                media_.files_.remove(part());
            } catch (const std::system_error&) { // it is removed at the next start
            }
        }
        void append(const AudioBuffer& sound) override {
            writing([&] { frames_ += sound.frames(); });
        }
        void finish() override {
            writing([&] {
                media_.files_.writeAtomically(
                    to_, media_.content(static_cast<double>(frames_) / sampleRate_));
            });
        }

      private:
        template <typename Step>
        void writing(Step step) {
            if (!media_.failure.empty())
                throw MediaFileError(MediaFileError::Kind::writeFailed, media_.failure);
            try {
                step();
            } catch (const std::system_error& error) {
                throw MediaFileError(MediaFileError::Kind::writeFailed, error.what());
            }
        }
        std::filesystem::path part() const {
            std::filesystem::path path = to_;
            return path += ".part";
        }

        ScriptedMedia& media_;
        const std::filesystem::path to_;
        const double sampleRate_;
        std::size_t frames_ = 0;
    };

    std::string content(double seconds) const {
        std::string text = "m4a " + std::to_string(seconds);
        text.resize(bytes, ' ');
        return text;
    }

    FaultyFileSystem& files_;
};

} // namespace tessarune::simulation
