#include "Tessarune/translation/GhostTranslationCandidateProcessor.h"

#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslatorError.h"

namespace tessarune {

namespace {

/// One preview under way, and what is written down of it.
struct Attempt {
    const std::string& candidate;
    const TranslationRunContext& context;
    const UUID& requestID;
    const LiveTranslationRuntime& runtime;
    const std::function<void(const TranslationObservation&)>& append;
    const std::stop_token& stop;
    TranslationObservation observation;

    Attempt(const std::string& text, const TranslationRunContext& pair, const UUID& id,
            const LiveTranslationRuntime& owner,
            const std::function<void(const TranslationObservation&)>& log,
            const std::stop_token& token)
        : candidate(text), context(pair), requestID(id), runtime(owner), append(log), stop(token) {
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
        append(observation);
    }

    /// The guard after each suspension: the newest request wins.
    bool isWanted() const {
        return runtime.isWanted(context, stop) &&
               runtime.isCurrentGhostRequest(candidate, context.target, requestID);
    }

    void record(TranslationObservation::Phase phase) {
        observation.t = runtime.now();
        observation.phase = phase;
        observation.durationSeconds = observation.t - startedAt;
        append(observation);
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

Task<void> GhostTranslationCandidateProcessor::process(
    std::string candidate, TranslationRunContext context, UUID requestID,
    std::shared_ptr<LiveTranslationRuntime> runtime,
    std::function<void(const TranslationObservation&)> append,
    std::function<void(const std::string& text)> setGhostTranslationText, std::stop_token stop) {
    Attempt attempt(candidate, context, requestID, *runtime, append, stop);
    if (context.passThrough) {
        attempt.observation.diagnostics.preflightStatus = "passThrough";
        if (!attempt.isWanted())
            co_return;
        attempt.recordSuccess(candidate);
        setGhostTranslationText(candidate);
        co_return;
    }
    const auto translator = runtime->translator();
    if (!translator)
        co_return;

    auto& diagnostics = attempt.observation.diagnostics;
    const double askedAt = runtime->now();
    Task<TranslationAvailabilityStatus> asking =
        translator->availabilityStatus(context.sourceLanguage, context.target);
    const TranslationAvailabilityStatus status = co_await asking;
    diagnostics.availabilitySeconds = runtime->now() - askedAt;
    diagnostics.preflightStatus = name(status);
    if (!attempt.isWanted())
        co_return;
    if (status == TranslationAvailabilityStatus::unsupported) {
        const auto unsupported =
            TranslatorError::unsupportedPair(context.sourceLanguage, context.target);
        attempt.recordFailure(unsupported.details());
        co_return;
    }

    // A pair that has to be prepared first does not stop a preview: translating prepares it.
    const double calledAt = runtime->now();
    std::string translated;
    std::exception_ptr error;
    try {
        Task<std::string> translating =
            translator->translate(candidate, context.sourceLanguage, context.target);
        translated = co_await translating;
    } catch (...) {
        error = std::current_exception();
    }
    diagnostics.translateCallSeconds = runtime->now() - calledAt;
    if (!attempt.isWanted())
        co_return;
    if (error) {
        attempt.recordFailure(TranslatorError::details(error));
        co_return;
    }
    attempt.recordSuccess(translated);
    setGhostTranslationText(translated);
}

void GhostTranslationTaskCoordinator::start(LiveTranslationRuntime& runtime, const UUID& requestID,
                                            std::string candidate, TranslationRunContext context,
                                            Process process) {
    runtime.startGhostTask(requestID, [requestID, candidate = std::move(candidate),
                                       context = std::move(context),
                                       process = std::move(process)](std::stop_token stop) {
        return process(candidate, context, requestID, std::move(stop));
    });
}

} // namespace tessarune
