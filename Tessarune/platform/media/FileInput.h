#pragma once

#include "Tessarune/platform/media/FFmpegSupport.h"

#include <filesystem>
#include <memory>

namespace tessarune::ffmpeg {

/// One file that FFmpeg's libraries read, and nothing else: a playlist or a script in it may name
/// other files and addresses, and those stay closed. Pipes can be read too, without going back.
class FileInput {
  public:
    /// Throws MediaFileError.
    explicit FileInput(const std::filesystem::path& path);
    ~FileInput();
    FileInput(const FileInput&) = delete;
    FileInput& operator=(const FileInput&) = delete;

    AVFormatContext* operator->() const { return format_.get(); }
    AVFormatContext* get() const { return format_.get(); }

  private:
    struct IODeleter {
        void operator()(AVIOContext* io) const {
            av_freep(&io->buffer);
            avio_context_free(&io);
        }
    };

    static int read(void* self, uint8_t* into, int size);
    static int64_t seek(void* self, int64_t offset, int whence);

    int file_ = -1;
    std::unique_ptr<AVIOContext, IODeleter> io_;
    Input format_;
};

} // namespace tessarune::ffmpeg
