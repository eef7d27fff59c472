#pragma once

#include <string_view>

namespace tessarune {

/// The outcome of replacing a recording's transcripts.
enum class RecordingTranscriptSaveOutcome {
    saved,
    skippedDeleted, ///< the recording was deleted, so nothing was saved
    skippedRefined, ///< a refined text exists, which is better
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
