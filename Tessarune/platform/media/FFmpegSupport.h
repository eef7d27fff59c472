#pragma once

#include "Tessarune/audio/MediaFile.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/SystemErrors.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

#include <filesystem>
#include <memory>
#include <string>

/// What the files of this folder share: owners for the library's objects, and its words for errors.
namespace tessarune::ffmpeg {

struct Deleter {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(SwrContext* context) const { swr_free(&context); }
};

/// A file that is written has another end than one that is read.
struct OutputDeleter {
    void operator()(AVFormatContext* context) const {
        avio_closep(&context->pb);
        avformat_free_context(context);
    }
};

using Output = std::unique_ptr<AVFormatContext, OutputDeleter>;
using Input = std::unique_ptr<AVFormatContext, Deleter>;
using Codec = std::unique_ptr<AVCodecContext, Deleter>;
using Frame = std::unique_ptr<AVFrame, Deleter>;
using Packet = std::unique_ptr<AVPacket, Deleter>;
using Resampler = std::unique_ptr<SwrContext, Deleter>;

inline std::string words(int error) {
    constexpr int lastSystemError = 4095; // beyond are the library's own
    if (error < 0 && AVUNERROR(error) <= lastSystemError)
        return systemMessage(AVUNERROR(error));
    if (error == AVERROR_INVALIDDATA || error == AVERROR_EOF)
        return localized("its contents are damaged");
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof text);
    return text;
}

[[noreturn]] inline void fail(MediaFileError::Kind kind, const std::filesystem::path& path,
                              const std::string& why) {
    const bool isInput = path == "-" || path == "/dev/stdin";
    throw MediaFileError(
        kind, localized("%@: %@", {isInput ? localized("standard input") : path.string(), why}));
}

/// Keeps the library from writing to standard error; failures reach the user as exceptions.
inline void beQuiet() {
    av_log_set_level(AV_LOG_QUIET);
}

} // namespace tessarune::ffmpeg
