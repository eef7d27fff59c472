#include "Tessarune/translation/GhostTranslationCandidateProcessor.h"

#include "Tessarune/translation/LiveTranscriptTranslation.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslatorError.h"

namespace tessarune {

namespace {

/// One preview in progress and its observation.
struct Attempt {
    LiveTranscriptTranslation& translation;
    const LiveTranslationRuntime& runtime;
    const std::string& candidate;
    const TranslationRunContext& context;
    const UUID& requestID;
    const std::stop_token& stop;
    TranslationObservation observation;

    Attempt(LiveTranscriptTranslation& owner, const std::string& text,
            const TranslationRunContext& pair, const UUID& id, const std::stop_token& token)
        : translation(owner),
          runtime(owner.runtime()),
          candidate(text),
          context(pair),
          requestID(id),
          stop(token) {
        observation.scope = TranslationObservation::Scope::ghost;
        observation.segmentID = runtime.newID();
        observation.segmentIDs = {observation.segmentID};
        observation.sourceText = candidate;
        observation.targetLanguage = context.target;
        observation.diagnostics.backend = runtime.settings().translationBackend;
        observation.diagnostics.sourceLanguage = context.sourceLanguage;
        observation.diagnostics.sourceCharacters =
            static_cast<std::int64_t>(Text::length(candidate));
        observation.diagnostics.sessionGeneration = runtime.committedSessionGeneration;
        observation.t = startedAt = runtime.now();
        translation.appendTranslationObservation(observation);
    }

    /// Checked after each suspension: only the newest request counts.
    bool isWanted() const {
        return runtime.isWanted(context, stop) &&
               runtime.isCurrentGhostRequest(candidate, context.target, requestID);
    }

    void record(TranslationObservation::Phase phase) {
        observation.t = runtime.now();
        observation.phase = phase;
        observation.durationSeconds = observation.t - startedAt;
        translation.appendTranslationObservation(observation);
    }

    void recordSuccess(const std::string& translated) {
        observation.translatedText = translated;
        record(TranslationObservation::Phase::success);
    }

    void recordFailure(const TranslationFailureDetails& details) {
        observation.error = details.message;
        observation.diagnostics.failureCategory = name(details.category);
        observation.diagnostics.failureDomain = details.domain;
        observation.diagnostics.failureCode = details.code;
        observation.diagnostics.failureReason = details.failureReason;
        record(TranslationObservation::Phase::failure);
    }

  private:
    double startedAt = 0;
};

} // namespace

Task<void>
GhostTranslationCandidateProcessor::process(std::shared_ptr<LiveTranscriptTranslation> translation,
                                            std::string candidate, TranslationRunContext context,
                                            UUID requestID, std::stop_token stop) {
    LiveTranslationRuntime& runtime = translation->runtime();
    Attempt attempt(*translation, candidate, context, requestID, stop);
    if (context.passThrough) {
        attempt.observation.diagnostics.preflightStatus = "passThrough";
        if (!attempt.isWanted())
            co_return;
        attempt.recordSuccess(candidate);
        translation->setGhostTranslationText(candidate);
        co_return;
    }
    const auto translator = runtime.translator();
    if (!translator)
        co_return;

    auto& diagnostics = attempt.observation.diagnostics;
    const double askedAt = runtime.now();
    const TranslationAvailabilityStatus status =
        co_await translator->availabilityStatus(context.sourceLanguage, context.target);
    diagnostics.availabilitySeconds = runtime.now() - askedAt;
    diagnostics.preflightStatus = name(status);
    if (!attempt.isWanted())
        co_return;
    if (status == TranslationAvailabilityStatus::unsupported) {
        const auto unsupported =
            TranslatorError::unsupportedPair(context.sourceLanguage, context.target);
        attempt.recordFailure(unsupported.details());
        co_return;
    }

    // `translate` also prepares an installed pair. It fails if files of the pair are missing.
    const double calledAt = runtime.now();
    std::string translated;
    std::exception_ptr error;
    try {
        translated =
            co_await translator->translate(candidate, context.sourceLanguage, context.target);
    } catch (...) {
        error = std::current_exception();
    }
    diagnostics.translateCallSeconds = runtime.now() - calledAt;
    if (!attempt.isWanted())
        co_return;
    if (error) {
        attempt.recordFailure(TranslatorError::detailsOf(error));
        co_return;
    }
    attempt.recordSuccess(translated);
    translation->setGhostTranslationText(translated);
}

} // namespace tessarune
