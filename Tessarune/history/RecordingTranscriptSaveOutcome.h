#pragma once

#include <string_view>

namespace tessarune {

/// What became of transcripts that were to replace those of a recording.
enum class RecordingTranscriptSaveOutcome {
    saved,
    skippedDeleted, ///< the recording is gone, and so is what was written for it
    skippedRefined, ///< a refined text is there, which knows more
    failed
};

constexpr std::string_view name(RecordingTranscriptSaveOutcome outcome) {
    switch (outcome) {
    case RecordingTranscriptSaveOutcome::saved:
        return "saved";
    case RecordingTranscriptSaveOutcome::skippedDeleted:
        return "skippedDeleted";
    case RecordingTranscriptSaveOutcome::skippedRefined:
        return "skippedRefined";
    case RecordingTranscriptSaveOutcome::failed:
        return "failed";
    }
    return {};
}

} // namespace tessarune
