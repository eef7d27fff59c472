#include "TessaruneCore/translation/CommittedTranslationHealthState.h"

namespace tessarune {

namespace {
constexpr std::int64_t rebuildCount = 3;
constexpr std::int64_t warningCount = 5;
} // namespace

std::string_view name(CommittedTranslationFailureAction action) {
    switch (action) {
    case CommittedTranslationFailureAction::continueSilently:
        return "continueSilently";
    case CommittedTranslationFailureAction::rebuildLanguagePair:
        return "rebuildLanguagePair";
    case CommittedTranslationFailureAction::surfaceWarning:
        return "surfaceWarning";
    case CommittedTranslationFailureAction::surfaceImmediately:
        return "surfaceImmediately";
    }
    return {};
}

void CommittedTranslationHealthState::recordSuccess(const UUID& unitID) {
    unresolvedUnitIDs.erase(unitID);
    consecutiveFailedUnits = 0;
}

CommittedTranslationFailureAction
CommittedTranslationHealthState::recordFailure(const UUID& unitID,
                                               CommittedTranslationFailureSeverity severity) {
    unresolvedUnitIDs.insert(unitID);
    if (severity == CommittedTranslationFailureSeverity::actionable) {
        consecutiveFailedUnits = 0;
        return CommittedTranslationFailureAction::surfaceImmediately;
    }
    ++consecutiveFailedUnits;
    if (consecutiveFailedUnits == rebuildCount)
        return CommittedTranslationFailureAction::rebuildLanguagePair;
    if (consecutiveFailedUnits < warningCount)
        return CommittedTranslationFailureAction::continueSilently;
    return CommittedTranslationFailureAction::surfaceWarning;
}

void CommittedTranslationHealthState::resolveFailures(const std::unordered_set<UUID>& unitIDs) {
    for (const auto& id : unitIDs)
        unresolvedUnitIDs.erase(id);
}

void CommittedTranslationHealthState::reset() {
    consecutiveFailedUnits = 0;
    unresolvedUnitIDs.clear();
}

} // namespace tessarune
