#pragma once

#include "Tessarune/platform/media/FFmpegSupport.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace tessarune::ffmpeg {

/// A single input file for FFmpeg's libraries. Other files and addresses that it names, as a
/// playlist does, are never opened. Also reads pipes, without seeking; "-" is standard input.
class FileInput {
  public:
    /// Opens the file and reads its beginning. Throws MediaFileError. A stop request ends a wait
    /// for a pipe, with the error `cancelled`. If `stop` can never be requested, a pipe is refused
    /// as `notMedia`, because nothing could end a wait for it.
    explicit FileInput(const std::filesystem::path& path, std::stop_token stop = {});
    ~FileInput();
    FileInput(const FileInput&) = delete;
    FileInput& operator=(const FileInput&) = delete;

    AVFormatContext* operator->() const { return format_.get(); }
    AVFormatContext* get() const { return format_.get(); }
    /// False for a pipe.
    bool canSeek() const { return isRegular_; }
    /// How many times longer the sound would be if the end of the file were not missing; 1 if no
    /// end is missing, or if the header does not tell (`statedEnd`). Reads of a pipe are counted:
    /// call this at its end.
    double timesTooShort() const;

  private:
    struct IODeleter {
        void operator()(AVIOContext* io) const {
            av_freep(&io->buffer);
            avio_context_free(&io);
        }
    };

    void openFile(const std::filesystem::path& path);
    void openContainer(const std::filesystem::path& path);
    void closeFile();
    void keepHead(std::uint64_t length);
    std::uint64_t size() const;
    bool waitForData() const;
    static int read(void* self, uint8_t* into, int size);
    static int64_t seek(void* self, int64_t offset, int whence);

    int file_ = -1;
    bool isRegular_ = false;
    int stopSignal_ = -1; ///< becomes readable on a stop request; only for pipes
    std::optional<std::stop_callback<std::function<void()>>> onStop_;
    std::unique_ptr<AVIOContext, IODeleter> io_;
    std::uint64_t received_ = 0; ///< bytes from a pipe
    std::string head_;           ///< the bytes before the sound
    Input format_;
};

} // namespace tessarune::ffmpeg
