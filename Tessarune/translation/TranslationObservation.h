#pragma once

#include "Tessarune/translation/TranslationAttemptDiagnostics.h"
#include "TessaruneCore/UUID.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// One line of a run's translation log: a translation began, succeeded or failed.
struct TranslationObservation {
    enum class Phase { start, success, failure };
    enum class Scope { committed, ghost };

    double t = 0; ///< seconds since 1970
    Phase phase = Phase::start;
    Scope scope = Scope::committed;
    std::optional<UUID> translationUnitID; ///< of committed translations
    UUID segmentID; ///< equals `resultSegmentID`; for a preview, the identity of the attempt
    std::vector<UUID> segmentIDs;
    std::optional<UUID> resultSegmentID; ///< the row that shows the result; not for previews
    std::string sourceText;
    std::string targetLanguage;
    std::optional<std::string> translatedText;
    std::optional<std::string> error;
    std::optional<double> durationSeconds;   ///< since the start
    std::optional<double> queueDelaySeconds; ///< from the commit to the start
    TranslationAttemptDiagnostics diagnostics;

    bool operator==(const TranslationObservation&) const = default;
};

std::string_view name(TranslationObservation::Phase phase);
std::string_view name(TranslationObservation::Scope scope);

/// Serialises the observation without absent values.
void to_json(nlohmann::ordered_json& json, const TranslationObservation& observation);

} // namespace tessarune
