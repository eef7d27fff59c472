#pragma once

#include "TessaruneCore/UUID.h"
#include "TessaruneCore/captions/CaptionSegment.h"

#include <span>
#include <string>
#include <unordered_set>
#include <vector>

/// Turns the caption state of a session into plain text. A session's text lives in four places at
/// any moment; these functions make one text of them without showing anything twice. Pure, safe
/// from any thread.
namespace tessarune::SessionTranscriptBuilder {

/// The four places, in reading order. The rows must outlive the call.
struct Sources {
    std::span<const CaptionSegment> committedSegments;
    std::span<const CaptionSegment> liveLeadingSentences;
    std::span<const CaptionSegment> softCaptionSegments;
    const CaptionSegment& currentPartial;
};

/// What is on the screen: all rows but those that the user cleared.
std::vector<CaptionSegment>
visibleSourceSegments(const Sources& sources, const std::unordered_set<UUID>& clearedSegmentIDs);

/// One line a row; rows without text give none.
std::string sourceText(std::span<const CaptionSegment> segments);
std::string translationText(std::span<const CaptionSegment> segments);
/// One block a row (source, then translation), with an empty line between blocks.
std::string bilingualText(std::span<const CaptionSegment> segments);

/// The full texts for saving; nothing is cleared here.
std::string sourceText(const Sources& sources);
std::string bilingualText(const Sources& sources);

} // namespace tessarune::SessionTranscriptBuilder
