#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// A change or a reset of the soft captions, for the diagnostics log. A reset is reported even if
/// it changes nothing.
struct SoftCaptionObservation {
    /// The cause; `hardLock`: sentences were frozen.
    enum class Phase { partial, reset, hardLock, engineFinal, seal };

    Phase phase = Phase::partial;
    double t = 0;                    ///< the core's clock
    bool enabled = false;            ///< the setting at that time
    double stableSeconds = 0;        ///< the setting at that time
    std::int64_t candidateCount = 0; ///< clauses that could become soft captions in this step
    std::int64_t visibleCount = 0;   ///< rows visible after this step
    bool changed = false; ///< the visible rows changed or, for a reset, any clause was dropped
    std::optional<std::string> resetReason;
    std::string sample; ///< at most 120 characters plus "..."

    /// Shortens a text to the length of `sample`.
    static std::string sampleOf(std::string_view text);

    bool operator==(const SoftCaptionObservation&) const;
};

std::string_view name(SoftCaptionObservation::Phase phase);

} // namespace tessarune
