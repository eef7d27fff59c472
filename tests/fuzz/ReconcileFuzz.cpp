// Whatever the recogniser returns, the transcript gets the final, the partial or nothing.
#include "Tessarune/speech/AppleFinalReconciler.h"
#include "tests/fuzz/Fuzz.h"

#include <limits>
#include <optional>

namespace {

using namespace tessarune;
using Decision = AppleFinalReconcileDecisionRecord::Decision;

std::optional<double> number(fuzz::Input& input) {
    switch (const std::uint8_t byte = input.byte()) {
    case 0:
        return std::nullopt;
    case 1:
        return std::numeric_limits<double>::quiet_NaN();
    case 2:
        return std::numeric_limits<double>::infinity();
    default:
        return (byte - 128) * 0.04;
    }
}

AppleFinalReconcileCandidate candidate(fuzz::Input& input, bool isFinal) {
    AppleFinalReconcileCandidate result;
    result.isFinal = isFinal;
    result.minConfidence = number(input);
    result.avgConfidence = number(input);
    result.audioStartSeconds = number(input);
    result.audioEndSeconds = number(input);
    if (input.flag())
        result.requestedSpeechOptions = {"reporting.alternativeTranscriptions"};
    result.setText(input.line());
    return result;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::optional<double> mark = number(input);
    const bool hasPartial = input.flag();
    const auto final = candidate(input, true);
    std::optional<AppleFinalReconcileCandidate> partial;
    if (hasPartial)
        partial = candidate(input, false);

    const auto outcome = AppleFinalReconciler::reconcile(final, partial, mark);
    switch (outcome.record.decision) {
    case Decision::useFinal:
        fuzz::require(outcome.text == final.text, "a used final with another text");
        fuzz::require(outcome.shouldKeepFinalWordTimings, "a used final without its word timings");
        break;
    case Decision::useLastPartial:
        fuzz::require(partial && outcome.text == partial->text, "a used partial with another text");
        fuzz::require(!outcome.shouldKeepFinalWordTimings, "a partial with a final's timings");
        break;
    case Decision::dropSuppressedFinal:
        fuzz::require(outcome.text.empty(), "a dropped final with a text");
        break;
    }
    fuzz::require(!outcome.record.reasons.empty(), "a decision without a reason");
    if (const auto similarity = outcome.record.finalLastPartialSimilarity)
        fuzz::require(*similarity >= 0 && *similarity <= 1, "a similarity out of range");
    return 0;
}
