#include "TessaruneCore/captions/BoundarySummary.h"

#include "TessaruneCore/text/Text.h"

#include <string_view>
#include <vector>

namespace tessarune::BoundarySummary {

namespace {

std::string reasonsOf(const BoundaryDecision& decision) {
    if (decision.reasons.empty())
        return "reason -";
    std::vector<std::string> values;
    values.reserve(decision.reasons.size());
    for (const auto& reason : decision.reasons)
        values.push_back(reason.diagnosticValue());
    return Text::joined(values, ", ");
}

/// The last text of the first of these lists that is not empty: hard pieces, soft pieces, leading
/// sentences. If all are empty, the tail.
std::string_view newestText(const BoundaryDecision& decision) {
    for (const auto* pieces : {&decision.hardPieces, &decision.softPieces, &decision.leading}) {
        if (!pieces->empty())
            return pieces->back();
    }
    return decision.tail;
}

} // namespace

std::string text(const BoundaryObservation& observation) {
    const BoundaryDecision& decision = observation.decision;
    std::vector<std::string> parts = {
        std::string(name(observation.phase)),
        "soft " + std::to_string(decision.softPieces.size()),
        "hard " + std::to_string(decision.hardPieces.size()),
        "lead " + std::to_string(decision.leading.size()),
        reasonsOf(decision),
    };
    const std::string_view preview = Text::trimmed(newestText(decision));
    if (!preview.empty())
        parts.push_back("“" + Text::truncated(preview, 72, "...") + "”");
    return Text::joined(parts, " · ");
}

} // namespace tessarune::BoundarySummary
