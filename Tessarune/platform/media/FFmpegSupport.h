#pragma once

#include "Tessarune/audio/AudioConverter.h"
#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/platform/media/FFmpegCalls.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/SystemErrors.h"

#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string>

/// Shared by the files of this folder: owners for the library's objects, the texts of its errors,
/// and the loading of its libraries.
namespace tessarune::ffmpeg {

struct Deleter {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(SwrContext* context) const { swr_free(&context); }
};

/// A file that is written needs a different cleanup than one that is read.
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

inline std::string errorText(int error) {
    constexpr int lastSystemError = 4095; // larger numbers are the library's own errors
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
    const bool isStandardInput = path == "-" || path == "/dev/stdin";
    throw MediaFileError(
        kind,
        localized("%@: %@", {isStandardInput ? localized("standard input") : path.string(), why}));
}

/// Loads the libraries. Returns the reason for the first failure, empty on success. Keeps the
/// libraries from writing to standard error; failures reach the user as exceptions.
inline std::string load(std::initializer_list<LateLibrary*> libraries) {
    for (LateLibrary* const library : libraries) {
        if (std::string failure = library->load(); !failure.empty())
            return failure;
    }
    av_log_set_level(AV_LOG_QUIET);
    return {};
}

/// Loads the libraries for the conversion of sound, and `others`. Throws AudioConversionError.
inline void loadForSound(std::initializer_list<LateLibrary*> others = {}) {
    std::string failure = load({&utilLibrary, &resamplingLibrary});
    if (failure.empty())
        failure = load(others);
    if (!failure.empty())
        throw AudioConversionError(localized("the sound cannot be converted: %@", {failure}));
}

/// Loads the libraries for reading and writing files. Throws MediaFileError.
inline void loadForFiles(const std::filesystem::path& path) {
    const std::string failure =
        load({&utilLibrary, &resamplingLibrary, &codecsLibrary, &containersLibrary});
    if (!failure.empty())
        fail(MediaFileError::Kind::unsupported, path, failure);
}

} // namespace tessarune::ffmpeg
