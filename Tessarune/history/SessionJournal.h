#pragma once

#include "Tessarune/shell/FileSystem.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/captions/CaptionSegment.h"
#include "TessaruneCore/captions/WordEvent.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <filesystem>
#include <memory>
#include <span>
#include <string>

namespace tessarune {

/// Keeps the committed rows of a running session on the disk, a line for each row and each change
/// of one, so that a crash does not cost them: "Transcripts/<UUID>.live.ndjson". The next start
/// makes the transcripts of it (RecordingRepair, SessionJournalContent).
///
/// Main queue; the writing is done on the queue "Tessarune.SessionJournal". A line is in the file,
/// and survives the program, as soon as the queue comes to it; it survives a loss of power some
/// seconds later. Failures are logged once a session and never reach the caller.
class SessionJournal {
  public:
    /// Begins the journal at `path`. The references must outlive it.
    SessionJournal(Host& host, FileSystem& files, TessaruneFileLogger& logger,
                   std::filesystem::path path, double recordingStartedAt,
                   std::string recognitionOptionID);
    /// Waits for what was handed over. The file stays.
    ~SessionJournal();
    SessionJournal(const SessionJournal&) = delete;
    SessionJournal& operator=(const SessionJournal&) = delete;

    /// A committed row, or one that has changed since (its translation came, it was corrected). Of
    /// lines with the same row the last counts; without word events those of before stay.
    void append(const CaptionSegment& row, std::span<const WordEvent> words = {});

    /// Resumes on the main queue when what was handed over survives a loss of power.
    Task<void> synchronize();

    /// The transcripts are saved: removes the file. Waits for the queue.
    void discard();

  private:
    class Writer;
    static Task<void> putOnDisk(Executor queue, std::shared_ptr<Writer> writer);

    Host& host_;
    std::shared_ptr<Writer> writer_; // touched on the queue only
    std::shared_ptr<SerialQueue> queue_;
};

} // namespace tessarune
