#include "Tessarune/history/SessionJournal.h"

#include "Tessarune/history/SessionJournalContent.h"
#include "TessaruneCore/host/RunOn.h"

#include <optional>
#include <utility>
#include <vector>

namespace tessarune {

namespace {

/// A loss of power loses the lines of at most this many seconds.
constexpr double synchronizeInterval = 5;

} // namespace

class SessionJournal::Writer : public std::enable_shared_from_this<Writer> {
  public:
    /// All functions run on `queue`.
    Writer(SerialQueue& queue, FileSystem& files, TessaruneFileLogger& logger,
           std::filesystem::path path)
        : queue_(queue), files_(files), logger_(logger), path_(std::move(path)) {}

    void append(const std::optional<std::string>& line) {
        if (!line || isDiscarded_)
            return;
        try {
            if (!file_)
                open();
            // The remains of a failed write must not run into this line.
            file_->append((std::exchange(isLineBroken_, false) ? "\n" : "") + *line + "\n");
            flushSoon();
        } catch (const std::exception& error) {
            isLineBroken_ = true;
            reportOnce(error);
        }
    }

    void putOnDisk() {
        isFlushDue_ = false;
        try {
            if (file_)
                file_->synchronize();
        } catch (const std::exception& error) {
            reportOnce(error);
        }
    }

    void discard() {
        isDiscarded_ = true;
        file_.reset();
        try {
            files_.remove(path_);
        } catch (const std::exception& error) { // the next launch removes it
            reportOnce(error);
        }
    }

  private:
    void open() {
        files_.createDirectories(path_.parent_path());
        file_ = files_.openForAppending(path_);
    }
    /// Flushes by a timer and not with the next line, which may come much later.
    void flushSoon() {
        if (std::exchange(isFlushDue_, true))
            return;
        queue_.after(synchronizeInterval, [weak = weak_from_this()] {
            if (const auto writer = weak.lock())
                writer->putOnDisk();
        });
    }
    void reportOnce(const std::exception& error) {
        if (!std::exchange(hasReported_, true))
            logger_.important("session.journal.failed",
                              {{"path", path_.string()}, {"error", std::string(error.what())}});
    }

    SerialQueue& queue_;
    FileSystem& files_;
    TessaruneFileLogger& logger_;
    std::filesystem::path path_;
    std::unique_ptr<AppendFile> file_;
    bool isFlushDue_ = false;
    bool isLineBroken_ = false;
    bool isDiscarded_ = false;
    bool hasReported_ = false;
};

SessionJournal::SessionJournal(Host& host, FileSystem& files, TessaruneFileLogger& logger,
                               std::filesystem::path path, double recordingStartedAt,
                               std::string recognitionOptionID)
    : host_(host),
      recognitionOptionID_(std::move(recognitionOptionID)),
      queue_(host.serialQueue("Tessarune.SessionJournal", QueuePriority::utility)),
      writer_(std::make_shared<Writer>(*queue_, files, logger, std::move(path))) {
    noteRecordingStart(recordingStartedAt);
}

SessionJournal::~SessionJournal() {
    queue_->sync([&] {
        writer_->putOnDisk(); // the scheduled flush will not run any more
        writer_.reset();
    });
}

void SessionJournal::noteRecordingStart(double recordingStartedAt) {
    queue_->async([writer = writer_, recordingStartedAt, option = recognitionOptionID_] {
        writer->append(SessionJournalContent::sessionLine(recordingStartedAt, option));
    });
}

void SessionJournal::append(const CaptionSegment& row, std::span<const WordEvent> words) {
    queue_->async([writer = writer_, row, events = std::vector(words.begin(), words.end())] {
        writer->append(SessionJournalContent::rowLine(row, events));
    });
}

Task<void> SessionJournal::synchronize() {
    return putOnDisk(Executor::queue(host_, queue_), writer_);
}

Task<void> SessionJournal::putOnDisk(Executor queue, std::shared_ptr<Writer> writer) {
    co_await runOn(std::move(queue), [&] { writer->putOnDisk(); });
}

void SessionJournal::discard() {
    queue_->sync([&] { writer_->discard(); });
}

} // namespace tessarune
