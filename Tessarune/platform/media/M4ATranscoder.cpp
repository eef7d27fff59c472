#include "Tessarune/platform/media/M4ATranscoder.h"

#include "Tessarune/platform/disk/Uninterrupted.h"
#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/media/FFmpegSupport.h"
#include "Tessarune/platform/media/SwresampleConverter.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/SystemErrors.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

namespace tessarune {

namespace {

using namespace ffmpeg;
using Kind = MediaFileError::Kind;

constexpr double progressStep = 0.005;

/// Flushes a file, or a folder if `flags` has O_DIRECTORY. A file must not get its final name
/// before its bytes are on the disk, and must not lose that name afterwards.
void synchronize(const std::filesystem::path& path, int flags) {
    const int file =
        uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | flags); });
    const bool isFlushed = file >= 0 && uninterrupted([&] { return ::fsync(file); }) == 0;
    const int error = errno;
    if (file >= 0)
        ::close(file);
    if (!isFlushed)
        fail(Kind::writeFailed, path, systemMessage(error));
}

/// An MP4 container with one track. The caller renames the finished file to `named`, so failures
/// name that file. `finish` writes the container's index, without which it cannot be played.
class M4AContainer {
  public:
    M4AContainer(std::filesystem::path path, std::filesystem::path named)
        : path_(std::move(path)),
          named_(std::move(named)),
          packet_(av_packet_alloc()),
          frame_(av_frame_alloc()) {
        AVFormatContext* raw = nullptr;
        check(avformat_alloc_output_context2(&raw, nullptr, "ipod", nullptr), Kind::cannotCreate);
        output_.reset(raw);
        createPrivately();
        const std::string url = "file:" + path_.string();
        check(avio_open(&output_->pb, url.c_str(), AVIO_FLAG_WRITE), Kind::cannotCreate);
        openEncoder();
        AVStream* stream = avformat_new_stream(output_.get(), nullptr);
        if (!stream)
            fail(Kind::cannotCreate, named_, errorText(AVERROR(ENOMEM)));
        check(avcodec_parameters_from_context(stream->codecpar, codec_.get()), Kind::cannotCreate);
        stream->time_base = codec_->time_base;
        check(avformat_write_header(output_.get(), nullptr), Kind::cannotCreate);
    }

    /// One channel at the file's sample rate.
    void append(const std::vector<float>& samples) {
        pending_.insert(pending_.end(), samples.begin(), samples.end());
        const auto size = static_cast<std::size_t>(codec_->frame_size);
        std::size_t at = 0;
        for (; at + size <= pending_.size(); at += size)
            encode(pending_.data() + at, size);
        pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(at));
    }

    void finish() {
        if (!pending_.empty())
            encode(pending_.data(), pending_.size());
        check(avcodec_send_frame(codec_.get(), nullptr), Kind::writeFailed);
        writePackets();
        check(av_write_trailer(output_.get()), Kind::writeFailed);
        avio_flush(output_->pb);
        check(output_->pb->error, Kind::writeFailed);
        check(avio_closep(&output_->pb), Kind::writeFailed);
    }

  private:
    void check(int result, Kind kind) const {
        if (result < 0)
            fail(kind, named_, errorText(result));
    }

    /// Creates the file for its owner only; the library would make it readable for everybody.
    void createPrivately() const {
        const int file = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        if (file < 0)
            fail(Kind::cannotCreate, named_, systemMessage(errno));
        ::close(file);
    }

    void openEncoder() {
        const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_AAC);
        if (!encoder)
            fail(Kind::cannotCreate, named_,
                 localized("cannot be created: there is no AAC encoder on this computer"));
        codec_.reset(avcodec_alloc_context3(encoder));
        codec_->sample_rate = M4A::sampleRate;
        codec_->bit_rate = M4A::bitRate;
        codec_->sample_fmt = AV_SAMPLE_FMT_FLTP;
        codec_->time_base = {1, M4A::sampleRate};
        av_channel_layout_default(&codec_->ch_layout, M4A::channels);
        if (output_->oformat->flags & AVFMT_GLOBALHEADER)
            codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        check(avcodec_open2(codec_.get(), encoder, nullptr), Kind::cannotCreate);
    }

    void encode(const float* samples, std::size_t count) {
        av_frame_unref(frame_.get());
        frame_->nb_samples = static_cast<int>(count);
        frame_->format = codec_->sample_fmt;
        frame_->sample_rate = codec_->sample_rate;
        frame_->pts = written_;
        check(av_channel_layout_copy(&frame_->ch_layout, &codec_->ch_layout), Kind::writeFailed);
        check(av_frame_get_buffer(frame_.get(), 0), Kind::writeFailed);
        std::memcpy(frame_->data[0], samples, count * sizeof(float));
        written_ += static_cast<std::int64_t>(count);
        check(avcodec_send_frame(codec_.get(), frame_.get()), Kind::writeFailed);
        writePackets();
    }

    void writePackets() {
        int received = 0;
        while ((received = avcodec_receive_packet(codec_.get(), packet_.get())) == 0) {
            packet_->stream_index = 0;
            av_packet_rescale_ts(packet_.get(), codec_->time_base, output_->streams[0]->time_base);
            check(av_interleaved_write_frame(output_.get(), packet_.get()), Kind::writeFailed);
        }
        if (received != AVERROR(EAGAIN) && received != AVERROR_EOF)
            check(received, Kind::writeFailed);
        check(output_->pb->error, Kind::writeFailed);
    }

    std::filesystem::path path_;
    std::filesystem::path named_; // in failures
    Output output_;
    Codec codec_;
    Packet packet_;
    Frame frame_;
    std::vector<float> pending_; // samples; less than a frame of the encoder
    std::int64_t written_ = 0;   // samples
};

/// Converts sound of any format for the container, which has another name until it is complete.
class FFmpegM4AFile final : public M4AFile {
  public:
    FFmpegM4AFile(std::filesystem::path to, AudioFormat from) : to_(std::move(to)) {
        runConversion([&] {
            converter_ = makeSwresampleConverter(from, {M4A::sampleRate, M4A::channels});
        });
        try {
            container_ = std::make_unique<M4AContainer>(partPath(), to_);
        } catch (...) {
            removeUnfinished();
            throw;
        }
    }
    ~FFmpegM4AFile() override {
        if (std::exchange(container_, nullptr))
            removeUnfinished();
    }

    void append(const AudioBuffer& sound) override {
        runConversion([&] { container_->append(converter_->convert(sound).samples); });
    }

    void finish() override {
        runConversion([&] { container_->append(converter_->flush().samples); });
        container_->finish();
        synchronize(partPath(), 0);
        std::error_code renamed;
        std::filesystem::rename(partPath(), to_, renamed);
        if (renamed)
            fail(Kind::writeFailed, to_, systemMessage(renamed.value()));
        container_.reset();
        synchronize(to_.has_parent_path() ? to_.parent_path() : ".", O_DIRECTORY);
    }

  private:
    /// Runs a step of the conversion; turns its failure into a MediaFileError.
    void runConversion(const std::function<void()>& step) const {
        try {
            step();
        } catch (const AudioConversionError& error) {
            fail(Kind::unsupported, to_, error.what());
        }
    }
    std::filesystem::path partPath() const {
        std::filesystem::path path = to_;
        return path += ".part";
    }
    void removeUnfinished() const {
        std::error_code ignored;
        std::filesystem::remove(partPath(), ignored);
    }

    const std::filesystem::path to_;
    std::unique_ptr<AudioConverter> converter_;
    std::unique_ptr<M4AContainer> container_; // null once the file has its final name
};

/// Reports progress in steps that are large enough to be seen.
class Progress {
  public:
    Progress(const MediaProgress& report, std::optional<double> seconds)
        : report_(report), seconds_(seconds.value_or(0)) {}

    void advance(double seconds) {
        done_ += seconds;
        if (!report_ || seconds_ <= 0)
            return;
        const double fraction = std::min(done_ / seconds_, 1.0);
        if (fraction - reported_ < progressStep)
            return;
        reported_ = fraction;
        report_(fraction);
    }
    void finish() const {
        if (report_)
            report_(1);
    }

  private:
    const MediaProgress& report_;
    double seconds_;
    double done_ = 0;
    double reported_ = 0;
};

} // namespace

std::unique_ptr<M4AFile> createM4A(const std::filesystem::path& to, AudioFormat from) {
    loadForFiles(to);
    return std::make_unique<FFmpegM4AFile>(to, from);
}

void transcodeToM4A(const std::filesystem::path& from, const std::filesystem::path& to,
                    const MediaProgress& report, std::stop_token stop) {
    const auto source = openFFmpegMediaFile(from);
    const auto file = createM4A(to, source->format());
    Progress progress(report, source->duration());
    while (const AudioBufferPtr block = source->read()) {
        if (stop.stop_requested())
            fail(Kind::cancelled, to, "stopped");
        file->append(*block);
        progress.advance(block->seconds());
    }
    file->finish();
    progress.finish();
}

} // namespace tessarune
