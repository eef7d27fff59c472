#pragma once

#include "Tessarune/display/LiveCaptionDisplaySegment.h"
#include "Tessarune/display/LiveSessionPhase.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tessarune {

/// The text of the translation status, and whether it offers a retry.
struct SubtitleTranslationStatusViewState {
    std::string text;
    bool hasIncomplete = false; ///< some committed row has no translation
    bool canRetryIncomplete = false;

    bool operator==(const SubtitleTranslationStatusViewState& other) const;
};

/// Everything that views draw of a session at one moment. A value: a view may keep an old frame,
/// because its rows never change. A copy costs the same for ten rows and for ten thousand.
///
/// Two frames are equal if their revisions, texts, phase and status are equal. Rows are not
/// compared, because they never change without a change of a revision.
struct LiveCaptionDisplayFrame {
    std::int64_t sourceRevision = 0;
    std::int64_t translationRevision = 0;
    LiveCaptionDisplayRows sourceTextTail; ///< committed rows that are not cleared, oldest first
    LiveCaptionDisplayRows liveTailRows;   ///< complete sentences and clauses that may still change
    LiveCaptionDisplayRows mergedBilingualSourceTail;        ///< `sourceTextTail`, one row per unit
    LiveCaptionDisplayRows mergedBilingualLiveTailRows;      ///< `liveTailRows`, one row per unit
    std::optional<LiveCaptionDisplaySegment> livePartialRow; ///< the open row, if it has a text
    SharedVector<std::string> translationTail;               ///< the visible translations
    std::string ghostTranslationText;                        ///< the preview; empty if none
    std::string ghostTranslationSourceText;                  ///< the source text of the preview
    std::string statusMessage;
    LiveSessionPhase sessionPhase = LiveSessionPhase::idle;
    SubtitleTranslationStatusViewState translationStatus;

    /// The initial frame.
    static LiveCaptionDisplayFrame empty();

    bool operator==(const LiveCaptionDisplayFrame& other) const;
};

} // namespace tessarune
