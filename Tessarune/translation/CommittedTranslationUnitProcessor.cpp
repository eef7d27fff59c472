#include "Tessarune/translation/CommittedTranslationUnitProcessor.h"

#include "Tessarune/translation/LiveTranscriptTranslation.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/host/CancellationError.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextHash.h"
#include "TessaruneCore/translation/TranslationSupport.h"
#include "TessaruneCore/translation/TranslatorError.h"

#include <variant>

namespace tessarune::CommittedTranslationUnitProcessor {

namespace {

using Severity = CommittedTranslationFailureSeverity;
using Action = CommittedTranslationFailureAction;

constexpr double retryDelaySeconds = 0.4;

/// One unit in progress. Lives in the frame of `process`, so references to it stay valid.
struct Attempt {
    LiveTranscriptTranslation& translation;
    const CommittedTranslationUnit& unit;
    const TranslationRunContext& context;
    const std::stop_token& stop;
    std::string text;
    double startedAt = 0;
    TranslationAttemptDiagnostics diagnostics;

    LiveTranslationRuntime& runtime() const { return translation.runtime(); }

    void begin() {
        startedAt = runtime().now();
        diagnostics.backend = runtime().settings().translationBackend;
        diagnostics.sourceLanguage = context.sourceLanguage;
        diagnostics.sourceCharacters = static_cast<std::int64_t>(Text::length(text));
        diagnostics.sessionGeneration = runtime().committedSessionGeneration;
        translation.recordCommittedTranslationStart(unit, context.target, startedAt, diagnostics);
    }

    /// The system log outlives a deleted recording, so it gets no texts unless the user allows
    /// diagnostics to keep them.
    std::string loggedSource() const {
        if (translation.keepsTextsForDiagnosis())
            return "'" + text + "'";
        return "'" + std::to_string(Text::length(text)) + " characters " + fnv1a64Hex(text) + "'";
    }

    bool isWanted() const { return runtime().isWanted(context, stop); }

    /// Completes the unit without the translator. True if the run may continue.
    bool close(std::string_view preflightStatus, const std::string& translatedText) {
        if (stop.stop_requested() ||
            !TranslationSupport::isAppleBackend(runtime().settings().translationBackend))
            return false;
        diagnostics.preflightStatus = preflightStatus;
        return succeed(translatedText);
    }

    bool succeed(const std::string& translatedText) {
        runtime().selectCommittedHealthPair(context.sourceLanguage, context.target);
        runtime().committedHealth.recordSuccess(unit.translationUnitID);
        translation.applyCommittedTranslationSuccess(unit, context.target, translatedText,
                                                     startedAt, diagnostics);
        return true;
    }

    void note(const TranslationFailureDetails& details) {
        diagnostics.failureCategory = name(details.category);
        diagnostics.failureDomain = details.domain;
        diagnostics.failureCode = details.code;
        diagnostics.failureReason = details.failureReason;
    }

    void logAutoRetry(const TranslationFailureDetails& details) const {
        runtime().log("translation.committed.autoRetry",
                      {{"translationUnitID", unit.translationUnitID.text()},
                       {"resultSegmentID", unit.resultSegmentID.text()},
                       {"target", context.target},
                       {"failureCategory", std::string(name(details.category))},
                       {"sourceCharacters", diagnostics.sourceCharacters},
                       {"failureDomain", details.domain},
                       {"failureCode", details.code},
                       {"delayMS", static_cast<std::int64_t>(retryDelaySeconds * 1000)}});
    }
};

using Outcome = std::variant<std::string, TranslationFailureDetails>;

Task<Outcome> translateOnce(Attempt& attempt, std::shared_ptr<Translator> translator) {
    const double before = attempt.runtime().now();
    const auto addDuration = [&attempt, before] {
        attempt.diagnostics.translateCallSeconds =
            attempt.diagnostics.translateCallSeconds.value_or(0) + attempt.runtime().now() - before;
    };
    try {
        std::string translated = co_await translator->translate(
            attempt.text, attempt.context.sourceLanguage, attempt.context.target);
        addDuration();
        co_return translated;
    } catch (...) {
        addDuration();
        co_return TranslatorError::detailsOf(std::current_exception());
    }
}

/// Prepares the pair again. True if the run may continue.
Task<bool> recoverPair(Attempt& attempt) {
    std::exception_ptr error;
    try {
        co_await attempt.runtime().rebuildCommittedLanguagePair(
            attempt.context.sourceLanguage, attempt.context.target, attempt.stop);
    } catch (const CancellationError&) {
        co_return false;
    } catch (...) {
        error = std::current_exception();
    }
    if (!attempt.isWanted())
        co_return false;
    if (!error)
        co_return true;
    const auto details = TranslatorError::detailsOf(error);
    if (severity(details.category) == Severity::recoverable)
        co_return true;
    attempt.translation.surfaceTranslationRecoveryFailure(details.message);
    co_return false;
}

/// Records the failure of the unit. True if the run may continue.
Task<bool> fail(Attempt& attempt, TranslationFailureDetails details, Severity severity) {
    auto& runtime = attempt.runtime();
    attempt.note(details);
    runtime.selectCommittedHealthPair(attempt.context.sourceLanguage, attempt.context.target);
    if (details.category == TranslationFailureCategory::languageResourcesNotReady)
        runtime.languageResourceFailures.insert(attempt.unit.translationUnitID);
    const Action action =
        runtime.committedHealth.recordFailure(attempt.unit.translationUnitID, severity);
    attempt.diagnostics.recoveryAction = name(action);
    if (severity == Severity::recoverable)
        TessaruneLog::translation.fault([&] {
            return "Tessarune translation failed after automatic retry: " + details.message +
                   " source=" + attempt.loggedSource() + " target=" + attempt.context.target;
        });
    attempt.translation.applyCommittedTranslationFailure(attempt.unit, attempt.context.target,
                                                         details.message, attempt.startedAt, action,
                                                         attempt.diagnostics);
    if (action != Action::rebuildLanguagePair)
        co_return severity == Severity::recoverable;
    co_return co_await recoverPair(attempt);
}

/// Translates, with one delayed retry if that may help. True if the run may continue.
Task<bool> translate(Attempt& attempt, std::shared_ptr<Translator> translator) {
    for (;;) {
        const Outcome outcome = co_await translateOnce(attempt, translator);
        if (!attempt.isWanted())
            co_return false;
        if (const auto* translated = std::get_if<std::string>(&outcome))
            co_return attempt.succeed(*translated);

        const auto& details = std::get<TranslationFailureDetails>(outcome);
        attempt.note(details);
        const Severity failureSeverity = severity(details.category);
        if (failureSeverity == Severity::actionable || attempt.diagnostics.automaticRetry) {
            co_return co_await fail(attempt, details, failureSeverity);
        }
        attempt.logAutoRetry(details);
        const bool hasWaited =
            co_await sleep(attempt.runtime().executor(), retryDelaySeconds, attempt.stop);
        if (!hasWaited || !attempt.isWanted())
            co_return false;
        attempt.diagnostics.attemptCount = 2;
        attempt.diagnostics.automaticRetry = true;
    }
}

} // namespace

Task<bool> process(std::shared_ptr<LiveTranscriptTranslation> translation,
                   CommittedTranslationUnit unit, TranslationRunContext context,
                   std::stop_token stop) {
    LiveTranslationRuntime& runtime = translation->runtime();
    Attempt attempt{
        *translation, unit, context, stop, std::string(Text::trimmed(unit.sourceText)), 0, {}};
    if (!context.passThrough &&
        runtime.isPreparingLanguages(context.sourceLanguage, context.target)) {
        translation->reportLanguagePreparation(context.sourceLanguage, context.target);
        co_return false;
    }
    attempt.begin();
    if (attempt.text.empty())
        co_return attempt.close("empty", "");
    if (context.passThrough)
        co_return attempt.close("passThrough", attempt.text);

    const auto translator = runtime.cachedTranslator;
    if (!translator)
        co_return false;
    const double before = runtime.now();
    const TranslationAvailabilityStatus status =
        co_await translator->availabilityStatus(context.sourceLanguage, context.target);
    attempt.diagnostics.availabilitySeconds = runtime.now() - before;
    attempt.diagnostics.preflightStatus = name(status);
    if (!attempt.isWanted())
        co_return false;

    if (status == TranslationAvailabilityStatus::supported) {
        translation->reportLanguagePreparation(context.sourceLanguage, context.target);
        co_return false;
    }
    if (status == TranslationAvailabilityStatus::unsupported) {
        const auto unsupported =
            TranslatorError::unsupportedPair(context.sourceLanguage, context.target);
        co_return co_await fail(attempt, unsupported.details(), Severity::actionable);
    }
    co_return co_await translate(attempt, translator);
}

} // namespace tessarune::CommittedTranslationUnitProcessor
