#pragma once

#include "Tessarune/audio/MediaFile.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>

namespace tessarune {

/// Encodes recordings as M4A, one at a time, on the queue "Tessarune.audio.m4aWriter". Main queue.
class AudioExporter {
  public:
    class ExportError : public std::runtime_error {
      public:
        enum class Kind {
            cannotCreateReader,
            exportFailed,
            cannotCreateWriter,
            missingSource,
            noAudioTrack
        };
        ExportError(Kind kind, const std::string& detail);
        Kind kind() const { return kind_; }

      private:
        Kind kind_;
    };

    AudioExporter(Host& host, TranscodeToM4A transcode);

    /// Writes `from` as M4A to `to`, which appears complete or not at all: AAC, 16000 Hz, one
    /// channel, 32000 bits a second. `progress` is called on the queue. Throws ExportError, or
    /// CancellationError when asked to stop. Resumes on the main queue.
    Task<void> transcodeToM4A(std::filesystem::path from, std::filesystem::path to,
                              MediaProgress progress = {}, std::stop_token stop = {});

    /// The beginning of a text, as much as fits into a file name. Pure.
    static std::string_view withinFileName(std::string_view text);
    /// A file name made from the note, or from the start time if there is no note.
    static std::string suggestedFilename(double startedAt, std::string_view note,
                                         std::string_view ext);

  private:
    Host& host_;
    std::shared_ptr<const TranscodeToM4A> transcode_;
    std::shared_ptr<SerialQueue> queue_;
};

} // namespace tessarune
