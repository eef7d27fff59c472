#include "TessaruneCore/diagnostics/LineLogWriter.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace tessarune {

namespace {

constexpr int waitMilliseconds = 100;
/// `close` waits at most this many times `waitMilliseconds` for a reader that has stopped reading.
constexpr int waitsForAReader = 20;

} // namespace

std::unique_ptr<LineLogWriter> LineLogWriter::open(Host& host, std::string_view queueLabel,
                                                   const std::filesystem::path& path,
                                                   Existing existing) {
    const int ifExists = existing == Existing::isRefused     ? O_EXCL
                         : existing == Existing::isTruncated ? O_TRUNC
                                                             : 0;
    // O_APPEND: a file that another program truncates gets no hole. O_NONBLOCK: opening fails for a
    // pipe without a reader, and a write to a pipe that is no longer read can be abandoned.
    const int file = ::open(
        path.c_str(), O_WRONLY | O_CREAT | ifExists | O_APPEND | O_NONBLOCK | O_CLOEXEC, 0600);
    if (file < 0)
        return nullptr;
    return std::unique_ptr<LineLogWriter>(
        new LineLogWriter(host.serialQueue(queueLabel, QueuePriority::utility), file));
}

LineLogWriter::LineLogWriter(std::shared_ptr<SerialQueue> queue, int file)
    : queue_(std::move(queue)), file_(file), waitsLeft_(waitsForAReader) {}

LineLogWriter::~LineLogWriter() {
    close();
}

void LineLogWriter::append(Encode encode) {
    if (queued_ >= maximumQueued) {
        hasLostLines_ = true;
        return;
    }
    ++queued_;
    queue_->async([this, encode = std::move(encode)] {
        write(encode);
        --queued_;
    });
}

void LineLogWriter::close() {
    isClosing_ = true;
    queue_->sync([this] {
        if (file_ >= 0)
            ::close(file_);
        file_ = -1;
    });
}

void LineLogWriter::write(const Encode& encode) {
    if (file_ < 0)
        return;
    std::optional<std::string> line = encode();
    if (!line) {
        hasLostLines_ = true;
        return;
    }
    *line += '\n';
    if (endsInsideALine_)
        line->insert(line->begin(), '\n');
    writeAll(*line);
}

void LineLogWriter::writeAll(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file_, bytes.data(), bytes.size());
        if (written < 0 && (errno == EINTR || (errno == EAGAIN && waitForReader())))
            continue;
        if (written <= 0) {
            hasLostLines_ = true;
            writeError_ = written < 0 ? errno : 0;
            return;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
        endsInsideALine_ = !bytes.empty();
    }
}

/// Waits until the pipe takes more bytes. Returns false once the waits that `close` allows are used
/// up.
bool LineLogWriter::waitForReader() {
    pollfd pipe{file_, POLLOUT, 0};
    while (!isClosing_ || waitsLeft_ > 0) {
        if (::poll(&pipe, 1, waitMilliseconds) != 0)
            return true; // if this is due to an error, the caller's next write fails
        if (isClosing_)
            --waitsLeft_;
    }
    return false;
}

} // namespace tessarune
