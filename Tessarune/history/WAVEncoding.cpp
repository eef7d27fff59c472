#include "Tessarune/history/WAVEncoding.h"

#include <algorithm>
#include <exception>

namespace tessarune {

namespace {

constexpr std::uint64_t encodingBlockBytes = 65536;
/// The seconds of sound between two reports of progress and checks for a stop.
constexpr double encodingStepSeconds = 10;

std::uint64_t wholeFrames(std::uint64_t bytes, const WAVHeader& header) {
    return bytes - bytes % (std::uint64_t{header.channels} * 2);
}

std::uint64_t bytesOf(double seconds, const WAVHeader& header) {
    return static_cast<std::uint64_t>(seconds * static_cast<double>(header.bytesPerSecond()));
}

AudioBuffer decodedPCM(const std::string& pcm, const WAVHeader& header) {
    AudioBuffer sound;
    sound.format = {static_cast<double>(header.sampleRate), header.channels};
    sound.samples.reserve(pcm.size() / 2);
    constexpr float fullScale = 32768;
    for (std::size_t at = 0; at + 1 < pcm.size(); at += 2) {
        const auto low = static_cast<unsigned char>(pcm[at]);
        const auto high = static_cast<unsigned char>(pcm[at + 1]);
        const auto sample = static_cast<std::int16_t>(low | high << 8);
        sound.samples.push_back(static_cast<float>(sample) / fullScale);
    }
    return sound;
}

} // namespace

template <typename Step>
void WAVEncoding::attempt(Step step) {
    if (!failure_.empty())
        return;
    try {
        step();
    } catch (const std::exception& error) {
        failure_ = error.what();
        file_.reset();
    }
}

void WAVEncoding::follow(double maximumSeconds) {
    attempt([&] {
        const std::uint64_t available = files_.size(wav_);
        if (available <= WAVHeader::size || !open())
            return;
        constexpr double uncertainSeconds = 1;
        const std::uint64_t margin = header_.dataOffset + bytesOf(uncertainSeconds, header_);
        const std::uint64_t certain = available > margin ? available - margin : 0;
        encode(std::min(certain, encoded_ + bytesOf(maximumSeconds, header_)));
    });
}

bool WAVEncoding::advance(double seconds) {
    bool isDone = false;
    attempt([&] {
        const std::uint64_t all = soundBytes();
        encode(std::min(all, encoded_ + bytesOf(seconds, header_)));
        isDone = encoded_ >= all;
    });
    return isDone;
}

bool WAVEncoding::finish(const MediaProgress& progress, const std::stop_token& stop) {
    bool isComplete = false;
    attempt([&] {
        const std::uint64_t all = soundBytes();
        while (encoded_ < all) {
            if (stop.stop_requested())
                throw MediaFileError(MediaFileError::Kind::cancelled, m4a_.string() + ": stopped");
            encode(std::min(all, encoded_ + bytesOf(encodingStepSeconds, header_)));
            if (progress)
                progress(static_cast<double>(encoded_) / static_cast<double>(all));
        }
        file_->finish();
        isComplete = true;
    });
    return isComplete;
}

/// Creates the output. False as long as the WAV has no complete header.
bool WAVEncoding::open() {
    if (file_)
        return true;
    const auto header = WAVHeader::decoded(files_.read(wav_, 0, WAVHeader::sizeToRead));
    if (!header || header->bytesPerSecond() == 0)
        return false;
    header_ = *header;
    file_ = create_(m4a_, {static_cast<double>(header_.sampleRate), header_.channels});
    return true;
}

/// The length of the sound in a closed WAV, in bytes.
std::uint64_t WAVEncoding::soundBytes() {
    const auto header = WAVHeader::decoded(files_.read(wav_, 0, WAVHeader::sizeToRead));
    const auto fail = [&](const char* why) {
        throw MediaFileError(MediaFileError::Kind::damaged, wav_.string() + ": " + why);
    };
    if (!header || !open())
        fail("no WAV");
    if (header->sampleRate != header_.sampleRate || header->channels != header_.channels)
        fail("its header has changed");
    const std::uint64_t size = files_.size(wav_);
    const std::uint64_t available = size > header->dataOffset ? size - header->dataOffset : 0;
    const std::uint64_t all = wholeFrames(std::min(header->dataSize, available), header_);
    if (encoded_ > all)
        fail("it has become shorter");
    return all;
}

void WAVEncoding::encode(std::uint64_t until) {
    until = wholeFrames(until, header_);
    while (encoded_ < until) {
        const std::string pcm =
            files_.read(wav_, header_.dataOffset + encoded_,
                        static_cast<std::size_t>(std::min(encodingBlockBytes, until - encoded_)));
        const std::uint64_t got = wholeFrames(pcm.size(), header_);
        if (got == 0)
            throw MediaFileError(MediaFileError::Kind::damaged, wav_.string() + ": ends too soon");
        file_->append(decodedPCM(pcm.substr(0, got), header_));
        encoded_ += got;
    }
}

} // namespace tessarune
