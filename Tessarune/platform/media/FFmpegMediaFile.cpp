#include "Tessarune/platform/media/FFmpegMediaFile.h"

#include "Tessarune/platform/media/FFmpegSupport.h"
#include "Tessarune/platform/media/FileInput.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <deque>
#include <string>
#include <string_view>
#include <utility>

namespace tessarune {

namespace {

using namespace ffmpeg;
using Kind = MediaFileError::Kind;

/// Limits that no real sound exceeds; a header that states more is wrong.
constexpr int maximumSampleRate = 768000;
constexpr int maximumChannels = 64;
/// If more than this many packets in a row cannot be decoded, the file is damaged.
constexpr int maximumFailuresInARow = 200;
/// A file was cut off if its missing end is longer than this many seconds. A size in bytes is
/// exact, except for a few bytes that some programs add.
constexpr double minimumMissingOfBytes = 0.25;
/// Encoders round a length that is stated as a time: its missing end must be longer than this many
/// seconds and also longer than this share of the stated length.
constexpr double minimumMissingOfTime = 1;
constexpr double minimumMissingShare = 0.02;
/// Other containers whose header states the length of the sound than `statedEnd` knows. FFmpeg
/// derives the length of all others from their contents.
constexpr std::string_view lengthStatingFormats[] = {"au",  "flac", "mov,mp4,m4a,3gp,3g2,mj2",
                                                     "mp3", "tta",  "wv"};

/// Decoding starts this long before the target of a seek, for decoders that depend on earlier
/// sound.
constexpr double leadInSeconds = 0.3;

class FFmpegMediaFile final : public MediaFile {
  public:
    FFmpegMediaFile(const std::filesystem::path& path, std::stop_token stop)
        : path_(path),
          input_(path, std::move(stop)),
          packet_(av_packet_alloc()),
          frame_(av_frame_alloc()) {
        const AVCodec* decoder = nullptr;
        stream_ = av_find_best_stream(input_.get(), AVMEDIA_TYPE_AUDIO, -1, -1, &decoder, 0);
        if (stream_ == AVERROR_STREAM_NOT_FOUND)
            fail(Kind::noAudioTrack, path_, localized("has no sound"));
        if (stream_ < 0 || !decoder)
            fail(Kind::unsupported, path_, localized("has sound in an unsupported format"));
        openDecoder(*decoder);
        for (unsigned i = 0; i < input_->nb_streams; ++i) {
            if (static_cast<int>(i) != stream_)
                input_->streams[i]->discard = AVDISCARD_ALL;
        }
        statedSeconds_ = statedLength();
        // Whether the sound of a pipe can be played is known only after its first packets.
        while (!input_.canSeek() && ready_.empty() && !ended_)
            decodeMore();
    }

    AudioFormat format() const override { return format_; }

    std::optional<double> duration() const override {
        const AVStream& stream = *input_->streams[stream_];
        if (stream.duration != AV_NOPTS_VALUE && stream.duration > 0)
            return static_cast<double>(stream.duration) * av_q2d(stream.time_base);
        if (input_->duration != AV_NOPTS_VALUE && input_->duration > 0)
            return static_cast<double>(input_->duration) / AV_TIME_BASE;
        return std::nullopt;
    }

    AudioBufferPtr read() override {
        while (ready_.empty() && !ended_) {
            try {
                decodeMore();
            } catch (...) {
                ended_ = true;
                throw;
            }
        }
        if (ready_.empty() && std::exchange(isCutOff_, false))
            fail(Kind::damaged, path_, localized("the end of the file is missing"));
        if (ready_.empty())
            return nullptr;
        AudioBufferPtr next = std::move(ready_.front());
        ready_.pop_front();
        return next;
    }

    void seek(double seconds) override {
        if (!input_.canSeek())
            fail(Kind::unsupported, path_, localized("can only be played from the beginning"));
        ready_.clear();
        resampler_.reset();
        toDrop_ = 0;
        failuresInARow_ = 0;
        ended_ = false;
        isCutOff_ = false;
        seekTarget_ = std::max(0.0, seconds);
        const double from = std::max(0.0, *seekTarget_ - leadInSeconds);
        const auto timestamp =
            startTime() + static_cast<std::int64_t>(std::llround(from / av_q2d(timeBase())));
        const int result = av_seek_frame(input_.get(), stream_, timestamp, AVSEEK_FLAG_BACKWARD);
        // Some containers refuse a position beyond the end.
        if (result < 0)
            ended_ = true;
        avcodec_flush_buffers(codec_.get());
    }

  private:
    AVRational timeBase() const { return input_->streams[stream_]->time_base; }
    std::int64_t startTime() const {
        const std::int64_t start = input_->streams[stream_]->start_time;
        return start == AV_NOPTS_VALUE ? 0 : start;
    }

    void openDecoder(const AVCodec& decoder) {
        codec_.reset(avcodec_alloc_context3(&decoder));
        const AVCodecParameters& parameters = *input_->streams[stream_]->codecpar;
        int result = avcodec_parameters_to_context(codec_.get(), &parameters);
        if (result >= 0)
            result = avcodec_open2(codec_.get(), &decoder, nullptr);
        if (result < 0)
            fail(Kind::unsupported, path_, errorText(result));
        format_ = {static_cast<double>(codec_->sample_rate), codec_->ch_layout.nb_channels};
        const bool isPossible = codec_->sample_rate > 0 &&
                                codec_->sample_rate <= maximumSampleRate && format_.channels > 0 &&
                                format_.channels <= maximumChannels;
        if (!isPossible)
            fail(Kind::unsupported, path_,
                 localized("has an invalid sample rate or number of channels"));
    }

    /// Reads one more packet; at the end of the file, drains the decoder.
    void decodeMore() {
        const int result = av_read_frame(input_.get(), packet_.get());
        if (result < 0) {
            ended_ = true;
            if (result == AVERROR_EXIT)
                fail(Kind::cancelled, path_, errorText(result));
            avcodec_send_packet(codec_.get(), nullptr);
            takeFrames();
            takeConverted(nullptr);
            const bool isTag = result == AVERROR_INVALIDDATA && hasAllSound();
            if (result != AVERROR_EOF && ready_.empty() && !isTag)
                failReading(result);
            if (!hasDecodedAny_ && ready_.empty() && failuresInARow_ > 0)
                fail(Kind::damaged, path_, localized("its sound cannot be decoded"));
            isCutOff_ = endsEarly();
            return;
        }
        const bool ours = packet_->stream_index == stream_;
        const int sent = ours ? avcodec_send_packet(codec_.get(), packet_.get()) : 0;
        av_packet_unref(packet_.get());
        if (!ours)
            return;
        if (sent == 0 && takeFrames()) {
            failuresInARow_ = 0;
            hasDecodedAny_ = true;
        } else if (sent < 0 && ++failuresInARow_ > maximumFailuresInARow) {
            fail(Kind::damaged, path_, errorText(sent));
        }
    }

    /// The length that the file states; `nullopt` if it states none. FFmpeg finds the length that
    /// an MP3 states only if it can seek.
    std::optional<double> statedLength() const {
        const bool statesLength = std::ranges::find(lengthStatingFormats, input_->iformat->name) !=
                                  std::end(lengthStatingFormats);
        if (!statesLength || input_->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE)
            return std::nullopt;
        return duration();
    }

    bool endsEarly() const {
        const double timesTooShort = input_.timesTooShort();
        if (!hasDecodedAny_)
            return timesTooShort > 1;
        if (statedSeconds_)
            return *statedSeconds_ - decodedThrough_ >
                   std::max(minimumMissingOfTime, minimumMissingShare * *statedSeconds_);
        return decodedThrough_ * (timesTooShort - 1) > minimumMissingOfBytes;
    }

    /// Whether all sound of the stated length was decoded. What follows may be a tag that FFmpeg
    /// cannot read, such as that of WavPack in a pipe.
    bool hasAllSound() const {
        constexpr double roundingSeconds = 0.05;
        return hasDecodedAny_ && statedSeconds_ &&
               *statedSeconds_ - decodedThrough_ < roundingSeconds;
    }

    [[noreturn]] void failReading(int error) const {
        const AVIndexEntry* first = avformat_index_get_entry(input_->streams[stream_], 0);
        const bool isSoundBeforePosition =
            !hasDecodedAny_ && first && first->pos < avio_seek(input_->pb, 0, SEEK_CUR);
        if (isSoundBeforePosition && !input_.canSeek())
            fail(Kind::unsupported, path_,
                 localized("has its index at the end and cannot be read from a pipe; save it as a "
                           "file first"));
        fail(Kind::damaged, path_, errorText(error));
    }

    bool takeFrames() {
        bool any = false;
        while (avcodec_receive_frame(codec_.get(), frame_.get()) == 0) {
            recordTime(*frame_);
            dropSoundBeforeTarget(*frame_);
            takeConverted(frame_.get());
            av_frame_unref(frame_.get());
            any = true;
        }
        return any;
    }

    void recordTime(const AVFrame& frame) {
        if (frame.best_effort_timestamp != AV_NOPTS_VALUE)
            decodedThrough_ =
                static_cast<double>(frame.best_effort_timestamp - startTime()) * av_q2d(timeBase());
        if (frame.sample_rate > 0)
            decodedThrough_ += static_cast<double>(frame.nb_samples) / frame.sample_rate;
    }

    /// At the first frame after a seek: computes how many samples precede the target.
    void dropSoundBeforeTarget(const AVFrame& frame) {
        if (!seekTarget_)
            return;
        const std::int64_t timestamp = frame.best_effort_timestamp;
        const double begin =
            timestamp == AV_NOPTS_VALUE
                ? *seekTarget_
                : static_cast<double>(timestamp - startTime()) * av_q2d(timeBase());
        const auto frames = std::llround((*seekTarget_ - begin) * format_.sampleRate);
        toDrop_ = static_cast<std::size_t>(std::max(0LL, frames)) *
                  static_cast<std::size_t>(format_.channels);
        seekTarget_.reset();
    }

    /// Converts a frame to interleaved floats in `format_`, even if the format of the track
    /// changes. Null drains the resampler.
    void takeConverted(const AVFrame* frame) {
        if (frame)
            prepareResampler(*frame);
        if (!resampler_)
            return;
        const int incoming = frame ? frame->nb_samples : 0;
        const int room = swr_get_out_samples(resampler_.get(), incoming);
        if (room <= 0)
            return;
        std::vector<float> samples(static_cast<std::size_t>(room) *
                                   static_cast<std::size_t>(format_.channels));
        auto* out = reinterpret_cast<uint8_t*>(samples.data());
        const int converted = swr_convert(
            resampler_.get(), &out, room,
            frame ? const_cast<const uint8_t**>(frame->extended_data) : nullptr, incoming);
        if (converted < 0)
            fail(Kind::damaged, path_, errorText(converted));
        samples.resize(static_cast<std::size_t>(converted) *
                       static_cast<std::size_t>(format_.channels));
        cutIntoBlocks(samples);
    }

    void prepareResampler(const AVFrame& frame) {
        const bool same = resampler_ && frame.sample_rate == inputRate_ &&
                          frame.format == inputFormat_ &&
                          frame.ch_layout.nb_channels == inputChannels_;
        if (same)
            return;
        AVChannelLayout from{};
        if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
            av_channel_layout_default(&from, frame.ch_layout.nb_channels);
        else
            av_channel_layout_copy(&from, &frame.ch_layout);
        // The same number of channels keeps its arrangement: the default one may be unknown.
        AVChannelLayout to{};
        if (from.nb_channels == format_.channels)
            av_channel_layout_copy(&to, &from);
        else
            av_channel_layout_default(&to, format_.channels);
        SwrContext* raw = nullptr;
        int result = swr_alloc_set_opts2(
            &raw, &to, AV_SAMPLE_FMT_FLT, static_cast<int>(format_.sampleRate), &from,
            static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
        resampler_.reset(raw);
        if (result >= 0)
            result = swr_init(resampler_.get());
        av_channel_layout_uninit(&from);
        av_channel_layout_uninit(&to);
        if (result < 0)
            fail(Kind::unsupported, path_, errorText(result));
        inputRate_ = frame.sample_rate;
        inputFormat_ = frame.format;
        inputChannels_ = frame.ch_layout.nb_channels;
    }

    void cutIntoBlocks(const std::vector<float>& samples) {
        const std::size_t step = maximumBlockFrames * static_cast<std::size_t>(format_.channels);
        const std::size_t first = std::min(toDrop_, samples.size());
        toDrop_ -= first;
        for (std::size_t at = first; at < samples.size(); at += step) {
            const std::size_t count = std::min(step, samples.size() - at);
            auto block = std::make_shared<AudioBuffer>();
            block->format = format_;
            block->samples.assign(samples.begin() + static_cast<std::ptrdiff_t>(at),
                                  samples.begin() + static_cast<std::ptrdiff_t>(at + count));
            ready_.push_back(std::move(block));
        }
    }

    std::filesystem::path path_;
    FileInput input_;
    std::optional<double> statedSeconds_; ///< when the file was opened; it may become shorter later
    Codec codec_;
    Packet packet_;
    Frame frame_;
    Resampler resampler_;
    int stream_ = -1;
    AudioFormat format_;
    int inputRate_ = 0;
    int inputFormat_ = -1;
    int inputChannels_ = 0;
    std::deque<AudioBufferPtr> ready_;
    std::optional<double> seekTarget_; ///< seconds; set until the first frame after a seek
    std::size_t toDrop_ = 0;           ///< samples that precede the target
    bool ended_ = false;
    bool hasDecodedAny_ = false;
    int failuresInARow_ = 0;
    double decodedThrough_ = 0; ///< where the last decoded frame ends in the file; seconds
    bool isCutOff_ = false;     ///< reported after the last sound
};

} // namespace

std::unique_ptr<MediaFile> openFFmpegMediaFile(const std::filesystem::path& path) {
    return openAwaitedFFmpegMediaFile(path, {});
}

std::unique_ptr<MediaFile> openAwaitedFFmpegMediaFile(const std::filesystem::path& path,
                                                      std::stop_token stop) {
    loadForFiles(path);
    return std::make_unique<FFmpegMediaFile>(path, std::move(stop));
}

} // namespace tessarune
