#include "Tessarune/platform/media/FileInput.h"

#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/platform/media/StatedEnd.h"
#include "TessaruneCore/text/Localization.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <utility>

namespace tessarune::ffmpeg {

namespace {

using Kind = MediaFileError::Kind;

constexpr std::size_t bufferBytes = 65536;
/// A WAV may have large chunks before its sound.
constexpr std::size_t maximumHeadBytes = 1 << 20;

} // namespace

FileInput::FileInput(const std::filesystem::path& path, std::stop_token stop) {
    try {
        openFile(path);
        if (!isRegular_ && !stop.stop_possible())
            fail(Kind::notMedia, path, localized("is not a sound file of a known format"));
        if (!isRegular_) {
            stopSignal_ = eventfd(0, EFD_CLOEXEC);
            onStop_.emplace(std::move(stop), [signal = stopSignal_] { eventfd_write(signal, 1); });
        }
        openContainer(path);
    } catch (...) {
        closeFile();
        throw;
    }
}

FileInput::~FileInput() {
    closeFile();
}

void FileInput::openFile(const std::filesystem::path& path) {
    // Opening a pipe without a writer must not block, because only the wait for data can be
    // cancelled. Standard input may be shared with other programs, so its flags are not changed.
    const bool isStandardInput = path == "-" || path == "/dev/stdin";
    file_ = isStandardInput ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                            : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat properties {};
    if (file_ < 0 || fstat(file_, &properties) < 0)
        fail(Kind::cannotOpen, path, errorText(AVERROR(errno)));
    if (S_ISDIR(properties.st_mode))
        fail(Kind::cannotOpen, path, localized("is a folder"));
    if (isatty(file_) != 0)
        fail(Kind::notMedia, path, localized("is a terminal, not a sound file"));
    isRegular_ = S_ISREG(properties.st_mode);
}

void FileInput::openContainer(const std::filesystem::path& path) {
    auto* buffer = static_cast<unsigned char*>(av_malloc(bufferBytes));
    io_.reset(avio_alloc_context(buffer, bufferBytes, 0, this, read, nullptr,
                                 isRegular_ ? seek : nullptr));
    AVFormatContext* raw = avformat_alloc_context();
    if (!io_ || !raw)
        throw std::bad_alloc();
    raw->pb = io_.get();
    // No protocol is named "none", so a container cannot make FFmpeg open other files.
    raw->protocol_whitelist = av_strdup("none");
    const int opened = avformat_open_input(&raw, path.c_str(), nullptr, nullptr);
    if (opened == AVERROR_EXIT)
        fail(Kind::cancelled, path, errorText(opened));
    // EINVAL comes from formats that are selected by the file's extension alone.
    const bool isRefused = isRegular_ && opened == AVERROR(EINVAL);
    // FFmpeg refuses a file without any sound, and otherwise stops where the sound begins.
    keepHead(opened < 0 ? maximumHeadBytes
                        : static_cast<std::uint64_t>(avio_seek(io_.get(), 0, SEEK_CUR)));
    const bool isRead = isRegular_ || io_->eof_reached != 0;
    if (opened < 0 && isRead && timesTooShort() > 1)
        fail(Kind::damaged, path, localized("the end of the file is missing"));
    if (opened == AVERROR_INVALIDDATA || opened == AVERROR_EOF || isRefused)
        fail(Kind::notMedia, path, localized("is not a sound file of a known format"));
    if (opened < 0)
        fail(Kind::cannotOpen, path, errorText(opened));
    format_.reset(raw);
    const int found = avformat_find_stream_info(raw, nullptr);
    if (found < 0)
        fail(found == AVERROR_EXIT ? Kind::cancelled : Kind::damaged, path, errorText(found));
}

void FileInput::closeFile() {
    format_.reset();
    onStop_.reset(); // waits for a running callback
    for (int* file : {&file_, &stopSignal_}) {
        if (*file >= 0)
            close(std::exchange(*file, -1));
    }
}

/// Blocks until a pipe has data or has ended. Returns false after a stop request.
bool FileInput::waitForData() const {
    if (isRegular_)
        return true;
    std::array<pollfd, 2> files{{{file_, POLLIN, 0}, {stopSignal_, POLLIN, 0}}};
    while (poll(files.data(), files.size(), -1) < 0 && errno == EINTR) {
    }
    return files[1].revents == 0;
}

/// Cuts or reads `head_` to the first `length` bytes.
void FileInput::keepHead(std::uint64_t length) {
    const auto known =
        std::min<std::uint64_t>(length, isRegular_ ? maximumHeadBytes : head_.size());
    head_.resize(static_cast<std::size_t>(known));
    if (isRegular_)
        head_.resize(static_cast<std::size_t>(
            std::max<ssize_t>(pread(file_, head_.data(), head_.size(), 0), 0)));
}

std::uint64_t FileInput::size() const {
    struct stat properties {};
    if (isRegular_ && fstat(file_, &properties) == 0)
        return static_cast<std::uint64_t>(properties.st_size);
    return received_;
}

double FileInput::timesTooShort() const {
    const std::uint64_t end = statedEnd(head_).value_or(0);
    const std::uint64_t begin = head_.size();
    if (end <= std::max(begin, size()))
        return 1;
    const std::uint64_t present = std::max(size(), begin + 1) - begin;
    return static_cast<double>(end - begin) / static_cast<double>(present);
}

int FileInput::read(void* self, uint8_t* into, int size) {
    auto& input = *static_cast<FileInput*>(self);
    for (;;) {
        if (!input.waitForData())
            return AVERROR_EXIT;
        const ssize_t got = ::read(input.file_, into, static_cast<std::size_t>(size));
        if (got > 0) {
            if (!input.isRegular_ && !input.format_ && input.head_.size() < maximumHeadBytes)
                input.head_.append(reinterpret_cast<const char*>(into),
                                   static_cast<std::size_t>(got));
            input.received_ += static_cast<std::uint64_t>(got);
            return static_cast<int>(got);
        }
        if (got == 0)
            return AVERROR_EOF;
        if (errno != EINTR && errno != EAGAIN)
            return AVERROR(errno);
    }
}

int64_t FileInput::seek(void* self, int64_t offset, int whence) {
    const int file = static_cast<FileInput*>(self)->file_;
    if (whence == AVSEEK_SIZE) {
        struct stat properties {};
        return fstat(file, &properties) == 0 ? properties.st_size : AVERROR(errno);
    }
    const off_t position = lseek(file, offset, whence & ~AVSEEK_FORCE);
    return position >= 0 ? position : AVERROR(errno);
}

} // namespace tessarune::ffmpeg
