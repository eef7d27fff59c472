#pragma once

#include "Tessarune/history/HistoryWordTimeline.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/refinement/SpeechAnalyzerFileTranscriptionResult.h"
#include "Tessarune/shell/FileSystem.h"

#include <optional>
#include <string>

namespace tessarune {

/// The transcript that a refinement is to replace, and what of it must not be lost. A plain value.
struct FormerTranscript {
    std::string sourceText;
    std::optional<HistoryWordTimeline> timeline;
    /// How much sound the recording has by what its recorder wrote down; nothing of files from
    /// elsewhere, whose containers only estimate it.
    std::optional<double> recordedSeconds;

    /// Whether this program wrote the file, and knows how long it is.
    static bool lengthIsExact(const RecordingMetadata& recording);

    /// As it stands on the disk. `recording`: its entry, if the index can be read. Throws
    /// std::system_error for what is there and cannot be read. Any thread.
    static FormerTranscript of(const UUID& id, const std::optional<RecordingMetadata>& recording,
                               const RecordingCatalog& catalog, FileSystem& files);

    /// Whether all sound of this transcript is within what was heard of the recording; a transcript
    /// without text has none. `isWhole`: the file was read to its end.
    bool wasHeard(double heardSeconds, bool isWhole) const;

    /// `refined`, and of this transcript each sentence in whose stretch of sound `refined` has
    /// nothing, with times that are pulled back. A sentence that `refined` has a little earlier or
    /// later is not repeated.
    SpeechAnalyzerFileTranscriptionResult
    keptIn(const SpeechAnalyzerFileTranscriptionResult& refined) const;
};

} // namespace tessarune
