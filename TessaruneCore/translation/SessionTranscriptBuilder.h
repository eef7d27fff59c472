#pragma once

#include "TessaruneCore/UUID.h"
#include "TessaruneCore/captions/CaptionSegment.h"

#include <span>
#include <string>
#include <unordered_set>
#include <vector>

/// Turns the caption state of a session into plain text. A session's text is spread over three
/// lists and the open row; these functions join the texts without repeating any. Pure, safe from
/// any thread.
namespace tessarune::SessionTranscriptBuilder {

/// The lists and the open row, in reading order. The rows must outlive the call.
struct Sources {
    std::span<const CaptionSegment> committedSegments;
    std::span<const CaptionSegment> liveLeadingSentences;
    std::span<const CaptionSegment> softCaptionSegments;
    const CaptionSegment& currentPartial;
};

/// The text on screen: all rows except those that the user cleared.
std::vector<CaptionSegment>
visibleSourceSegments(const Sources& sources, const std::unordered_set<UUID>& clearedSegmentIDs);

/// One line per row; rows without text are skipped.
std::string sourceText(std::span<const CaptionSegment> segments);
std::string translationText(std::span<const CaptionSegment> segments);
/// One block per row (source, then translation), separated by empty lines.
std::string bilingualText(std::span<const CaptionSegment> segments);

/// The full texts for saving, including cleared rows.
std::string sourceText(const Sources& sources);
std::string bilingualText(const Sources& sources);

} // namespace tessarune::SessionTranscriptBuilder
