#include "TessaruneCore/captions/SoftCaptionObservation.h"

#include "TessaruneCore/text/Text.h"

#include <array>

namespace tessarune {

namespace {

/// In the order of the enumerators.
constexpr std::array<std::string_view, 5> phaseNames = {"partial", "reset", "hardLock",
                                                        "engineFinal", "seal"};

} // namespace

std::string SoftCaptionObservation::sampleOf(std::string_view text) {
    return Text::truncated(text, 120, "...");
}

bool SoftCaptionObservation::operator==(const SoftCaptionObservation& other) const {
    const bool sameReason = resetReason.has_value() == other.resetReason.has_value() &&
                            (!resetReason || Text::equal(*resetReason, *other.resetReason));
    return phase == other.phase && t == other.t && enabled == other.enabled &&
           stableSeconds == other.stableSeconds && candidateCount == other.candidateCount &&
           visibleCount == other.visibleCount && changed == other.changed && sameReason &&
           Text::equal(sample, other.sample);
}

std::string_view name(SoftCaptionObservation::Phase phase) {
    return phaseNames[static_cast<std::size_t>(phase)];
}

} // namespace tessarune
