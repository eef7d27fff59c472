#include "Tessarune/platform/media/SwresampleConverter.h"

#include "Tessarune/audio/StereoMix.h"
#include "Tessarune/platform/media/FFmpegSupport.h"
#include "TessaruneCore/text/Localization.h"

#include <optional>
#include <vector>

namespace tessarune {

namespace {

using namespace ffmpeg;

/// The mean of all channels.
std::vector<float> meanOf(const AudioBuffer& input) {
    std::vector<float> mono(input.frames());
    const auto channels = static_cast<std::size_t>(input.format.channels);
    for (std::size_t i = 0; i < input.samples.size(); ++i)
        mono[i / channels] += input.samples[i] / static_cast<float>(channels);
    return mono;
}

class SwresampleConverter final : public AudioConverter {
  public:
    SwresampleConverter(AudioFormat from, AudioFormat to) : to_(to) {
        if (from.channels < 1 || to.channels < 1 || from.sampleRate < 1 || to.sampleRate < 1)
            throw AudioConversionError(localized("the sound has no channels or no sample rate"));
        if (from.channels == 2 && to.channels == 1)
            mix_.emplace();
        AVChannelLayout in{};
        AVChannelLayout out{};
        av_channel_layout_default(&in, from.channels);
        // The library does not mix channels without a known arrangement, such as 10 or 18. Of 3 or
        // of more than 8 channels, it assumes arrangements that drop some of them; such sound
        // usually comes from recording interfaces and may have speech in any channel.
        const bool isUnknown = in.order == AV_CHANNEL_ORDER_UNSPEC && to.channels != from.channels;
        const bool dropsChannels = to.channels == 1 && (from.channels == 3 || from.channels > 8);
        isMixed_ = mix_ || isUnknown || dropsChannels;
        if (isMixed_)
            av_channel_layout_default(&in, 1);
        av_channel_layout_default(&out, to.channels);
        SwrContext* raw = nullptr;
        int result =
            swr_alloc_set_opts2(&raw, &out, AV_SAMPLE_FMT_FLT, static_cast<int>(to.sampleRate), &in,
                                AV_SAMPLE_FMT_FLT, static_cast<int>(from.sampleRate), 0, nullptr);
        context_.reset(raw);
        // Mixing must not exceed full scale, even if the channels are identical.
        if (result >= 0)
            result = av_opt_set_double(raw, "rematrix_maxval", 1.0, 0);
        if (result >= 0)
            result = swr_init(context_.get());
        if (result < 0)
            throw AudioConversionError(
                localized("the sound cannot be converted: %@", {errorText(result)}));
    }

    AudioFormat outputFormat() const override { return to_; }

    AudioBuffer convert(const AudioBuffer& input) override {
        std::vector<float> mono;
        if (isMixed_)
            mono = mix_ ? mix_->mixed(input) : meanOf(input);
        const auto* in =
            reinterpret_cast<const uint8_t*>(isMixed_ ? mono.data() : input.samples.data());
        return run(&in, static_cast<int>(input.frames()));
    }

    AudioBuffer flush() override { return run(nullptr, 0); }

  private:
    AudioBuffer run(const uint8_t** in, int frames) {
        AudioBuffer output;
        output.format = to_;
        const int room = swr_get_out_samples(context_.get(), frames);
        if (room <= 0)
            return output;
        const auto channels = static_cast<std::size_t>(to_.channels);
        output.samples.resize(static_cast<std::size_t>(room) * channels);
        auto* out = reinterpret_cast<uint8_t*>(output.samples.data());
        const int converted = swr_convert(context_.get(), &out, room, in, frames);
        if (converted < 0)
            throw AudioConversionError(
                localized("the sound cannot be converted: %@", {errorText(converted)}));
        output.samples.resize(static_cast<std::size_t>(converted) * channels);
        return output;
    }

    AudioFormat to_;
    std::optional<StereoMix> mix_;
    bool isMixed_ = false; ///< to one channel, before the conversion
    Resampler context_;
};

} // namespace

std::unique_ptr<AudioConverter> makeSwresampleConverter(AudioFormat from, AudioFormat to) {
    loadForSound();
    return std::make_unique<SwresampleConverter>(from, to);
}

} // namespace tessarune
