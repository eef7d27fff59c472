#pragma once

#include "TessaruneCore/UUID.h"

#include <cstdint>
#include <string_view>
#include <unordered_set>

namespace tessarune {

/// Whether a retry may help or the user has to act.
enum class CommittedTranslationFailureSeverity { recoverable, actionable };

/// How to react to a failed unit.
enum class CommittedTranslationFailureAction {
    continueSilently,
    rebuildLanguagePair,
    surfaceWarning,
    surfaceImmediately
};

std::string_view name(CommittedTranslationFailureAction action);

/// Counts the failures of one language pair's units and maps each to an action. Of consecutive
/// recoverable failures, the third reloads the pair, the fifth and later ones are shown to the
/// user, and the others are silent. A failure that the user must resolve is shown at once and
/// resets the count.
struct CommittedTranslationHealthState {
    std::int64_t consecutiveFailedUnits = 0;
    std::unordered_set<UUID> unresolvedUnitIDs;

    bool hasUnresolvedUnits() const { return !unresolvedUnitIDs.empty(); }

    void recordSuccess(const UUID& unitID);
    CommittedTranslationFailureAction recordFailure(const UUID& unitID,
                                                    CommittedTranslationFailureSeverity severity);
    /// Forgets that these units failed, because they will be tried again. Keeps
    /// `consecutiveFailedUnits`.
    void resolveFailures(const std::unordered_set<UUID>& unitIDs);
    void reset();

    bool operator==(const CommittedTranslationHealthState&) const = default;
};

} // namespace tessarune
