#pragma once

#include "Tessarune/history/HistoryWordTimeline.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/refinement/SpeechAnalyzerFileTranscriptionResult.h"
#include "Tessarune/shell/FileSystem.h"

#include <optional>
#include <string>

namespace tessarune {

/// The transcript that a refinement is to replace, and the parts of it that must not be lost. A
/// plain value.
struct FormerTranscript {
    std::string sourceText;
    std::optional<HistoryWordTimeline> timeline;
    /// The recording's length as its recorder wrote it; `nullopt` for foreign files, whose
    /// containers only estimate it.
    std::optional<double> recordedSeconds;

    /// Whether this program wrote the file, and knows how long it is.
    static bool lengthIsExact(const RecordingMetadata& recording);

    /// Reads the transcript from the disk. `recording`: its entry, if the index is readable. Throws
    /// std::system_error for files that exist and cannot be read. Any thread.
    static FormerTranscript of(const UUID& id, const std::optional<RecordingMetadata>& recording,
                               const RecordingCatalog& catalog, FileSystem& files);

    /// Whether all sound of this transcript is within the part of the recording that was heard;
    /// true for a transcript without text. `isWhole`: the file was read to its end.
    bool wasHeard(double heardSeconds, bool isWhole) const;

    /// `refined`, plus each sentence of this transcript in whose time `refined` has nothing, with
    /// times that are pulled back. A sentence that `refined` has slightly earlier or later is not
    /// repeated.
    SpeechAnalyzerFileTranscriptionResult
    keptIn(const SpeechAnalyzerFileTranscriptionResult& refined) const;
};

} // namespace tessarune
