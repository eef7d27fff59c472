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

/// Keeps the committed rows of a running session in the file "Transcripts/<UUID>.live.ndjson", one
/// line per row and per change of a row, so that a crash does not lose them. After a crash, the
/// next launch writes the missing transcripts from these files (RecordingRepair,
/// SessionJournalContent).
///
/// Main queue; the writing is done on the queue "Tessarune.SessionJournal". A line survives a crash
/// of the program once the queue has written it. A loss of power loses at most the lines of the
/// last five seconds. Failures are logged once a session and never reach the caller.
class SessionJournal {
  public:
    /// Begins the journal in the file `path`. The references must outlive this object.
    SessionJournal(Host& host, FileSystem& files, TessaruneFileLogger& logger,
                   std::filesystem::path path, double recordingStartedAt,
                   std::string recognitionOptionID);
    /// Waits for queued lines. The file stays.
    ~SessionJournal();
    SessionJournal(const SessionJournal&) = delete;
    SessionJournal& operator=(const SessionJournal&) = delete;

    /// Appends a new start time of the recording. It also applies to earlier rows.
    void noteRecordingStart(double recordingStartedAt);

    /// Appends a committed row, or its new state after it was translated or corrected. If a row has
    /// several lines, the last one counts. If the last line has no word events, the row keeps those
    /// of an earlier line.
    void append(const CaptionSegment& row, std::span<const WordEvent> words = {});

    /// Flushes all queued lines to the disk, so that they survive a loss of power. Resumes on the
    /// main queue.
    Task<void> synchronize();

    /// Removes the file. Call it when the transcripts are saved. Waits for the queue.
    void discard();

  private:
    class Writer;
    static Task<void> putOnDisk(Executor queue, std::shared_ptr<Writer> writer);

    Host& host_;
    const std::string recognitionOptionID_;
    std::shared_ptr<SerialQueue> queue_;
    std::shared_ptr<Writer> writer_; // used on the queue only
};

} // namespace tessarune
