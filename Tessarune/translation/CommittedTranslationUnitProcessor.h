#pragma once

#include "Tessarune/translation/LiveTranslationRuntime.h"
#include "Tessarune/translation/TranslationAttemptDiagnostics.h"
#include "Tessarune/translation/TranslationRunContext.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/translation/CommittedTranslationHealthState.h"
#include "TessaruneCore/translation/CommittedTranslationUnit.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>

/// Translates one unit: its automatic retry, the classification of its failure, and the recovery
/// of the language pair. Main queue; suspended only while the translator works or a delay runs.
namespace tessarune::CommittedTranslationUnitProcessor {

/// Where the outcome of a unit goes. `startedAt` is in seconds since 1970.
struct Handlers {
    using Unit = CommittedTranslationUnit;
    using Diagnostics = TranslationAttemptDiagnostics;

    std::function<void(const Unit&, const std::string& target, double startedAt,
                       const Diagnostics&)>
        recordStart;
    std::function<void(const Unit&, const std::string& target, const std::string& translatedText,
                       double startedAt, const Diagnostics&)>
        applySuccess;
    std::function<void(const Unit&, const std::string& target, const std::string& error,
                       double startedAt, CommittedTranslationFailureAction, const Diagnostics&)>
        applyFailure;
    /// The pair has to be prepared first; the unit stays pending.
    std::function<void(const std::string& source, const std::string& target)>
        reportLanguagePreparation;
    /// The pair could not be recovered, and the user can do something about it.
    std::function<void(const std::string& message)> reportRecoveryFailure;
};

inline constexpr std::uint64_t standardRetryDelayNanoseconds = 400'000'000;

/// False if the sleep was cut short.
using RetrySleep = std::function<Task<bool>(std::uint64_t nanoseconds, std::stop_token stop)>;

/// True when the queue may go on. Without `retrySleep` the host's time passes.
Task<bool> process(CommittedTranslationUnit unit, TranslationRunContext context,
                   std::shared_ptr<LiveTranslationRuntime> runtime, Handlers handlers,
                   std::stop_token stop,
                   std::uint64_t retryDelayNanoseconds = standardRetryDelayNanoseconds,
                   RetrySleep retrySleep = {});

} // namespace tessarune::CommittedTranslationUnitProcessor
