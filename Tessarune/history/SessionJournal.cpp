#include "Tessarune/history/SessionJournal.h"

#include "Tessarune/history/SessionJournalContent.h"
#include "TessaruneCore/host/RunOn.h"

#include <optional>
#include <utility>
#include <vector>

namespace tessarune {

namespace {

/// A loss of power loses the captions of at most this many seconds.
constexpr double synchronizeInterval = 5;

} // namespace

class SessionJournal::Writer {
  public:
    Writer(Host& host, FileSystem& files, TessaruneFileLogger& logger, std::filesystem::path path)
        : host_(host), files_(files), logger_(logger), path_(std::move(path)) {}

    void append(const std::optional<std::string>& line) {
        if (!line || isDiscarded_)
            return;
        try {
            if (!file_)
                open();
            // The remains of a failed write must not run into this line.
            file_->append((std::exchange(isLineBroken_, false) ? "\n" : "") + *line + "\n");
            if (host_.now() - synchronizedAt_ >= synchronizeInterval)
                synchronize();
        } catch (const std::exception& error) {
            isLineBroken_ = true;
            reportOnce(error);
        }
    }

    void putOnDisk() {
        try {
            if (file_)
                synchronize();
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
        synchronizedAt_ = host_.now();
    }
    void synchronize() {
        file_->synchronize();
        synchronizedAt_ = host_.now();
    }
    void reportOnce(const std::exception& error) {
        if (!std::exchange(hasReported_, true))
            logger_.important("session.journal.failed",
                              {{"path", path_.string()}, {"error", std::string(error.what())}});
    }

    Host& host_;
    FileSystem& files_;
    TessaruneFileLogger& logger_;
    std::filesystem::path path_;
    std::unique_ptr<AppendFile> file_;
    double synchronizedAt_ = 0;
    bool isLineBroken_ = false;
    bool isDiscarded_ = false;
    bool hasReported_ = false;
};

SessionJournal::SessionJournal(Host& host, FileSystem& files, TessaruneFileLogger& logger,
                               std::filesystem::path path, double recordingStartedAt,
                               std::string recognitionOptionID)
    : host_(host),
      recognitionOptionID_(std::move(recognitionOptionID)),
      writer_(std::make_shared<Writer>(host, files, logger, std::move(path))),
      queue_(host.serialQueue("Tessarune.SessionJournal", QueuePriority::utility)) {
    noteRecordingStart(recordingStartedAt);
}

SessionJournal::~SessionJournal() {
    queue_->sync([&] { writer_.reset(); });
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
