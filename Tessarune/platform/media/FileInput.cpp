#include "Tessarune/platform/media/FileInput.h"

#include "Tessarune/audio/MediaFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>

namespace tessarune::ffmpeg {

namespace {

using Kind = MediaFileError::Kind;

constexpr int bufferBytes = 64 * 1024;

} // namespace

FileInput::FileInput(const std::filesystem::path& path) {
    file_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat properties {};
    if (file_ < 0 || fstat(file_, &properties) < 0) {
        const int error = errno;
        if (file_ >= 0)
            close(file_);
        fail(Kind::cannotOpen, path, words(AVERROR(error)));
    }
    try {
        if (S_ISDIR(properties.st_mode))
            fail(Kind::cannotOpen, path, "is a folder");
        auto* buffer = static_cast<unsigned char*>(av_malloc(bufferBytes));
        io_.reset(avio_alloc_context(buffer, bufferBytes, 0, this, read, nullptr,
                                     S_ISREG(properties.st_mode) ? seek : nullptr));
        AVFormatContext* raw = avformat_alloc_context();
        if (!io_ || !raw)
            throw std::bad_alloc();
        raw->pb = io_.get();
        // No protocol is called so: whatever else the file wants opened is refused.
        raw->protocol_whitelist = av_strdup("none");
        const int opened = avformat_open_input(&raw, path.c_str(), nullptr, nullptr);
        if (opened == AVERROR_INVALIDDATA || opened == AVERROR_EOF)
            fail(Kind::notMedia, path, "is no sound file that is known here");
        if (opened < 0)
            fail(Kind::cannotOpen, path, words(opened));
        format_.reset(raw);
        const int found = avformat_find_stream_info(raw, nullptr);
        if (found < 0)
            fail(Kind::damaged, path, words(found));
    } catch (...) {
        format_.reset();
        close(file_);
        throw;
    }
}

FileInput::~FileInput() {
    format_.reset();
    close(file_);
}

int FileInput::read(void* self, uint8_t* into, int size) {
    for (;;) {
        const ssize_t got =
            ::read(static_cast<FileInput*>(self)->file_, into, static_cast<std::size_t>(size));
        if (got > 0)
            return static_cast<int>(got);
        if (got == 0)
            return AVERROR_EOF;
        if (errno != EINTR)
            return AVERROR(errno);
    }
}

int64_t FileInput::seek(void* self, int64_t offset, int whence) {
    const int file = static_cast<FileInput*>(self)->file_;
    if (whence == AVSEEK_SIZE) {
        struct stat properties {};
        return fstat(file, &properties) == 0 ? properties.st_size : AVERROR(errno);
    }
    const off_t place = lseek(file, offset, whence & ~AVSEEK_FORCE);
    return place >= 0 ? place : AVERROR(errno);
}

} // namespace tessarune::ffmpeg
