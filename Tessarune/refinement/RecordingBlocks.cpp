#include "Tessarune/refinement/RecordingBlocks.h"

#include <algorithm>

namespace tessarune {

RecordingBlocks::RecordingBlocks(const OpenMediaFile& open, const MakeAudioConverter& makeConverter,
                                 const std::filesystem::path& path, AudioFormat format)
    : file_(open(path)),
      converter_(makeConverter(file_->format(), format)),
      onset_(file_->format()),
      ready_{format, {}} {}

AudioBufferPtr RecordingBlocks::next(double seconds) {
    const auto wanted = static_cast<std::size_t>(seconds * ready_.format.sampleRate) *
                        static_cast<std::size_t>(ready_.format.channels);
    const auto append = [this](const AudioBuffer& sound) {
        ready_.samples.insert(ready_.samples.end(), sound.samples.begin(), sound.samples.end());
    };
    while (ready_.samples.size() < wanted && !ended_) {
        if (const AudioBufferPtr sound = readFile()) {
            append(converter_->convert(*sound));
        } else {
            ended_ = true;
            onset_.finish();
            append(converter_->flush());
        }
    }
    if (ready_.samples.empty())
        return nullptr;
    const auto count = static_cast<std::ptrdiff_t>(std::min(wanted, ready_.samples.size()));
    auto block = std::make_shared<AudioBuffer>(
        AudioBuffer{ready_.format, {ready_.samples.begin(), ready_.samples.begin() + count}});
    ready_.samples.erase(ready_.samples.begin(), ready_.samples.begin() + count);
    return block;
}

/// Returns null at the end, and if the file becomes unreadable.
AudioBufferPtr RecordingBlocks::readFile() {
    try {
        AudioBufferPtr sound = file_->read();
        if (sound) {
            heardSeconds_ += sound->seconds();
            onset_.hear(*sound);
        }
        return sound;
    } catch (const MediaFileError& error) {
        brokenOff_ = error.what();
        return nullptr;
    }
}

} // namespace tessarune
