#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tessarune {

/// Measurements of one translation, including its retry, for the session's translation log.
struct TranslationAttemptDiagnostics {
    std::string backend;
    std::string sourceLanguage;
    std::int64_t sourceCharacters = 0;
    std::optional<double> availabilitySeconds;
    std::optional<double> translateCallSeconds; ///< the sum of all attempts
    std::optional<double> applySeconds;
    /// The pair's status; "passThrough" or "empty" if the translator was not needed.
    std::optional<std::string> preflightStatus;
    std::int64_t attemptCount = 1;
    bool automaticRetry = false;
    std::optional<std::string> failureCategory;
    std::optional<std::string> failureDomain;
    std::optional<std::int64_t> failureCode;
    std::optional<std::string> failureReason;
    std::int64_t sessionGeneration = 0;
    std::optional<std::string> recoveryAction;

    bool operator==(const TranslationAttemptDiagnostics&) const = default;
};

} // namespace tessarune
