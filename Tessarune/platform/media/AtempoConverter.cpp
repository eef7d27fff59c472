#include "Tessarune/platform/media/AtempoConverter.h"

#include "Tessarune/platform/media/FFmpegSupport.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <cmath>

namespace tessarune {

namespace {

using namespace ffmpeg;

/// Above this rate the filter would skip samples instead of blending them. For higher rates, two
/// filters in a row are used, each with a lower rate.
constexpr double maximumRateOfOneFilter = 2.0;

struct FilterGraphDeleter {
    void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
};
using FilterGraph = std::unique_ptr<AVFilterGraph, FilterGraphDeleter>;

class AtempoConverter final : public AudioConverter {
  public:
    AtempoConverter(AudioFormat format, double rate)
        : format_(format), graph_(avfilter_graph_alloc()), frame_(av_frame_alloc()) {
        if (format.channels < 1 || format.sampleRate < 1 || !(rate > 0))
            throw AudioConversionError(localized("the sound has no channels or no sample rate"));
        graph_->nb_threads = 1; // filtering takes only a thousandth of the sound's time
        av_channel_layout_default(&layout_, format.channels);
        const std::string sampleRate = std::to_string(static_cast<int>(format.sampleRate));
        char layout[64] = {};
        av_channel_layout_describe(&layout_, layout, sizeof layout);
        AVFilterContext* last = source_ =
            add("abuffer", "sample_fmt=flt:sample_rate=" + sampleRate + ":time_base=1/" +
                               sampleRate + ":channel_layout=" + layout);
        const int filters = rate > maximumRateOfOneFilter ? 2 : 1;
        // As a fraction: how the library parses a decimal point depends on the locale.
        constexpr double parts = 1e6;
        const std::string tempo =
            std::to_string(std::llround(std::pow(rate, 1.0 / filters) * parts)) + "/1000000";
        for (int i = 0; i < filters; ++i)
            last = connect(last, add("atempo", "tempo=" + tempo));
        sink_ = connect(last, add("abuffersink", ""));
        check(avfilter_graph_config(graph_.get(), nullptr));
    }
    ~AtempoConverter() override { av_channel_layout_uninit(&layout_); }
    AtempoConverter(const AtempoConverter&) = delete;

    AudioFormat outputFormat() const override { return format_; }

    AudioBuffer convert(const AudioBuffer& input) override {
        frame_->format = AV_SAMPLE_FMT_FLT;
        frame_->sample_rate = static_cast<int>(format_.sampleRate);
        frame_->nb_samples = static_cast<int>(input.frames());
        frame_->pts = framesIn_;
        framesIn_ += frame_->nb_samples;
        check(av_channel_layout_copy(&frame_->ch_layout, &layout_));
        check(av_frame_get_buffer(frame_.get(), 0));
        std::ranges::copy(input.samples, reinterpret_cast<float*>(frame_->data[0]));
        check(av_buffersrc_add_frame(source_, frame_.get())); // takes the contents of the frame
        return takeOutput();
    }

    AudioBuffer flush() override {
        check(av_buffersrc_add_frame(source_, nullptr));
        return takeOutput();
    }

  private:
    static void check(int result) {
        if (result < 0)
            throw AudioConversionError(
                localized("the sound cannot be converted: %@", {errorText(result)}));
    }

    AVFilterContext* add(const char* filter, const std::string& options) {
        AVFilterContext* context = nullptr;
        check(avfilter_graph_create_filter(&context, avfilter_get_by_name(filter), nullptr,
                                           options.c_str(), nullptr, graph_.get()));
        return context;
    }
    static AVFilterContext* connect(AVFilterContext* from, AVFilterContext* to) {
        check(avfilter_link(from, 0, to, 0));
        return to;
    }

    AudioBuffer takeOutput() {
        AudioBuffer output{format_, {}};
        for (;;) {
            const int result = av_buffersink_get_frame(sink_, frame_.get());
            if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
                return output;
            check(result);
            const auto* samples = reinterpret_cast<const float*>(frame_->data[0]);
            const auto count = static_cast<std::size_t>(frame_->nb_samples) *
                               static_cast<std::size_t>(format_.channels);
            output.samples.insert(output.samples.end(), samples, samples + count);
            av_frame_unref(frame_.get());
        }
    }

    AudioFormat format_;
    AVChannelLayout layout_{};
    FilterGraph graph_;
    Frame frame_;
    AVFilterContext* source_ = nullptr;
    AVFilterContext* sink_ = nullptr;
    std::int64_t framesIn_ = 0;
};

} // namespace

std::unique_ptr<AudioConverter> makeAtempoConverter(AudioFormat format, double rate) {
    loadForSound({&filtersLibrary});
    return std::make_unique<AtempoConverter>(format, rate);
}

} // namespace tessarune
