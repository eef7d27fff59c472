#include "Tessarune/platform/media/AtempoConverter.h"

#include "Tessarune/platform/media/FFmpegSupport.h"
#include "TessaruneCore/text/Localization.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace tessarune {

namespace {

using namespace ffmpeg;

/// Beyond this the filter leaves samples out where it should blend them; two in a row do not.
constexpr double fastestOfOneFilter = 2.0;

/// The filter library, loaded when it is first needed: it brings others along that start threads as
/// they are loaded, and these would take the signals of a program that has not blocked them yet.
class FilterLibrary {
  public:
    /// Throws AudioConversionError where it cannot be loaded.
    static const FilterLibrary& shared() {
        static const FilterLibrary library;
        return library;
    }

    decltype(&::avfilter_graph_alloc) graphAlloc = nullptr;
    decltype(&::avfilter_graph_free) graphFree = nullptr;
    decltype(&::avfilter_graph_create_filter) createFilter = nullptr;
    decltype(&::avfilter_get_by_name) getByName = nullptr;
    decltype(&::avfilter_link) link = nullptr;
    decltype(&::avfilter_graph_config) graphConfig = nullptr;
    decltype(&::av_buffersrc_add_frame) addFrame = nullptr;
    decltype(&::av_buffersink_get_frame) getFrame = nullptr;

  private:
    FilterLibrary() {
        const std::string name = "libavfilter.so." + std::to_string(LIBAVFILTER_VERSION_MAJOR);
        void* const library = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
        const auto find = [&](auto& function, const char* symbol) {
            void* const found = library ? dlsym(library, symbol) : nullptr;
            if (!found)
                throw AudioConversionError(localized("the sound cannot be converted: %@", {name}));
            function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(found);
        };
        find(graphAlloc, "avfilter_graph_alloc");
        find(graphFree, "avfilter_graph_free");
        find(createFilter, "avfilter_graph_create_filter");
        find(getByName, "avfilter_get_by_name");
        find(link, "avfilter_link");
        find(graphConfig, "avfilter_graph_config");
        find(addFrame, "av_buffersrc_add_frame");
        find(getFrame, "av_buffersink_get_frame");
    }
};

struct FilterGraphDeleter {
    void operator()(AVFilterGraph* graph) const { FilterLibrary::shared().graphFree(&graph); }
};
using FilterGraph = std::unique_ptr<AVFilterGraph, FilterGraphDeleter>;

class AtempoConverter final : public AudioConverter {
  public:
    AtempoConverter(AudioFormat format, double rate)
        : format_(format), graph_(filters_.graphAlloc()), frame_(av_frame_alloc()) {
        if (format.channels < 1 || format.sampleRate < 1 || !(rate > 0))
            throw AudioConversionError(localized("the sound has no channels or no sample rate"));
        graph_->nb_threads = 1; // no threads for what takes a thousandth of its time
        av_channel_layout_default(&layout_, format.channels);
        const std::string sampleRate = std::to_string(static_cast<int>(format.sampleRate));
        char layout[64] = {};
        av_channel_layout_describe(&layout_, layout, sizeof layout);
        AVFilterContext* last = source_ =
            add("abuffer", "sample_fmt=flt:sample_rate=" + sampleRate + ":time_base=1/" +
                               sampleRate + ":channel_layout=" + layout);
        const int filters = rate > fastestOfOneFilter ? 2 : 1;
        // As a fraction: the library reads a decimal point as the locale has it.
        constexpr double parts = 1e6;
        const std::string tempo =
            std::to_string(std::llround(std::pow(rate, 1.0 / filters) * parts)) + "/1000000";
        for (int i = 0; i < filters; ++i)
            last = connect(last, add("atempo", "tempo=" + tempo));
        sink_ = connect(last, add("abuffersink", ""));
        check(filters_.graphConfig(graph_.get(), nullptr));
    }
    ~AtempoConverter() override { av_channel_layout_uninit(&layout_); }
    AtempoConverter(const AtempoConverter&) = delete;

    AudioFormat outputFormat() const override { return format_; }

    AudioBuffer convert(const AudioBuffer& input) override {
        frame_->format = AV_SAMPLE_FMT_FLT;
        frame_->sample_rate = static_cast<int>(format_.sampleRate);
        frame_->nb_samples = static_cast<int>(input.frames());
        frame_->pts = taken_;
        taken_ += frame_->nb_samples;
        check(av_channel_layout_copy(&frame_->ch_layout, &layout_));
        check(av_frame_get_buffer(frame_.get(), 0));
        std::ranges::copy(input.samples, reinterpret_cast<float*>(frame_->data[0]));
        check(filters_.addFrame(source_, frame_.get())); // which leaves the frame empty
        return takeOutput();
    }

    AudioBuffer flush() override {
        check(filters_.addFrame(source_, nullptr));
        return takeOutput();
    }

  private:
    static void check(int result) {
        if (result < 0)
            throw AudioConversionError(
                localized("the sound cannot be converted: %@", {words(result)}));
    }

    AVFilterContext* add(const char* filter, const std::string& options) {
        AVFilterContext* context = nullptr;
        check(filters_.createFilter(&context, filters_.getByName(filter), nullptr, options.c_str(),
                                    nullptr, graph_.get()));
        return context;
    }
    AVFilterContext* connect(AVFilterContext* from, AVFilterContext* to) const {
        check(filters_.link(from, 0, to, 0));
        return to;
    }

    AudioBuffer takeOutput() {
        AudioBuffer output{format_, {}};
        for (;;) {
            const int result = filters_.getFrame(sink_, frame_.get());
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

    const FilterLibrary& filters_ = FilterLibrary::shared();
    AudioFormat format_;
    AVChannelLayout layout_{};
    FilterGraph graph_;
    Frame frame_;
    AVFilterContext* source_ = nullptr;
    AVFilterContext* sink_ = nullptr;
    std::int64_t taken_ = 0; ///< frames
};

} // namespace

std::unique_ptr<AudioConverter> makeAtempoConverter(AudioFormat format, double rate) {
    beQuiet();
    return std::make_unique<AtempoConverter>(format, rate);
}

} // namespace tessarune
