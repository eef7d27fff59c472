#pragma once

#include "TessaruneCore/UUID.h"

#include <cstdint>
#include <string_view>
#include <unordered_set>

namespace tessarune {

/// Whether trying again may help, or the user has to do something.
enum class CommittedTranslationFailureSeverity { recoverable, actionable };

/// What follows from a failed unit.
enum class CommittedTranslationFailureAction {
    continueSilently,
    rebuildLanguagePair,
    surfaceWarning,
    surfaceImmediately
};

std::string_view name(CommittedTranslationFailureAction action);

/// Counts the failures of one language pair's units and turns each into an action: single
/// recoverable ones pass in silence, the third in a row asks for a new pair, the fifth and later
/// ones are told to the user; what the user must act on is told at once.
struct CommittedTranslationHealthState {
    std::int64_t consecutiveFailedUnits = 0;
    std::unordered_set<UUID> unresolvedUnitIDs;

    bool hasUnresolvedUnits() const { return !unresolvedUnitIDs.empty(); }

    void recordSuccess(const UUID& unitID);
    CommittedTranslationFailureAction recordFailure(const UUID& unitID,
                                                    CommittedTranslationFailureSeverity severity);
    /// The failures are gone, but the count goes on: nothing has succeeded yet.
    void resolveFailures(const std::unordered_set<UUID>& unitIDs);
    void reset();

    bool operator==(const CommittedTranslationHealthState&) const = default;
};

} // namespace tessarune
