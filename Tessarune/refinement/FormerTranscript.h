#pragma once

#include "Tessarune/history/HistoryWordTimeline.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/refinement/SpeechAnalyzerFileTranscriptionResult.h"
#include "Tessarune/shell/FileSystem.h"

#include <optional>
#include <string>

namespace tessarune {

/// The transcript that a refinement replaces. Finds the parts of it that must not be lost. A plain
/// value.
struct FormerTranscript {
    std::string sourceText;
    std::optional<HistoryWordTimeline> timeline;
    /// The recording's length as its recorder wrote it; `nullopt` for imported files, whose
    /// containers only estimate it.
    std::optional<double> recordedSeconds;

    /// Whether this program wrote the file and therefore knows its exact length.
    static bool lengthIsExact(const RecordingMetadata& recording);

    /// Reads the transcript from the disk. `recording` is the recording's entry in the index, if
    /// there is one. Throws std::system_error for files that exist and cannot be read. Any thread.
    static FormerTranscript of(const UUID& id, const std::optional<RecordingMetadata>& recording,
                               const RecordingCatalog& catalog, FileSystem& files);

    /// Whether a refinement that heard the first `heardSeconds` of the recording heard all sound of
    /// this transcript; true for a transcript without text. `isWhole` is true if the refinement
    /// read the file to its end.
    bool wasHeard(double heardSeconds, bool isWhole) const;

    /// Returns `refined.pulledBackToOnset()`, and adds each sentence of this transcript whose time
    /// `refined` hardly covers. A sentence that `refined` has slightly earlier or later is not
    /// added.
    SpeechAnalyzerFileTranscriptionResult
    keptIn(const SpeechAnalyzerFileTranscriptionResult& refined) const;
};

} // namespace tessarune
