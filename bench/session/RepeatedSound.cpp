#include "bench/session/RepeatedSound.h"

#include "Tessarune/platform/media/FFmpegMediaFile.h"

#include <utility>
#include <vector>

namespace tessarune {

namespace {

/// Decodes the file only once, so that the decoder does not affect measurements.
class RepeatedFile final : public MediaFile {
  public:
    RepeatedFile(const std::filesystem::path& path, double seconds) : seconds_(seconds) {
        const auto file = openFFmpegMediaFile(path);
        format_ = file->format();
        while (AudioBufferPtr block = file->read())
            blocks_.push_back(std::move(block));
        if (blocks_.empty())
            throw MediaFileError(MediaFileError::Kind::damaged, path.string() + ": no sound");
    }

    AudioFormat format() const override { return format_; }
    std::optional<double> duration() const override { return seconds_; }
    AudioBufferPtr read() override {
        if (given_ >= seconds_)
            return nullptr;
        const AudioBufferPtr& block = blocks_[next_++ % blocks_.size()];
        given_ += block->seconds();
        return block;
    }

  private:
    const double seconds_;
    AudioFormat format_;
    std::vector<AudioBufferPtr> blocks_;
    std::size_t next_ = 0;
    double given_ = 0;
};

} // namespace

OpenMediaFile repeatedSound(double seconds) {
    return [seconds](const std::filesystem::path& path) {
        return std::make_unique<RepeatedFile>(path, seconds);
    };
}

} // namespace tessarune
