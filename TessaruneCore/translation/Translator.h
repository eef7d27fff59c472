#pragma once

#include "TessaruneCore/host/Task.h"

#include <string>
#include <string_view>

namespace tessarune {

enum class TranslationAvailabilityStatus {
    installed,  ///< can translate now
    supported,  ///< has to be downloaded first
    unsupported ///< there is no such pair
};

std::string_view name(TranslationAvailabilityStatus status);

/// Interface between the translation logic and the offline translation service. Languages are the
/// identifiers of `TranslationSupport`.
///
/// Operations may run concurrently. Each resumes on the executor that the translator was created
/// for; the caller keeps the translator alive until the operation has ended. Failures are
/// `TranslatorError`s.
class Translator {
  public:
    virtual ~Translator() = default;

    /// Never fails.
    virtual Task<TranslationAvailabilityStatus> availabilityStatus(std::string source,
                                                                   std::string target) = 0;
    /// Loads what the pair needs, and downloads it first if the translator is allowed to. Does
    /// nothing for a pair that is ready.
    virtual Task<void> prepareLanguages(std::string source, std::string target) = 0;
    /// Drops all state of the pair and prepares it again.
    virtual Task<void> rebuildLanguagePair(std::string source, std::string target) = 0;
    /// Prepares the pair first if necessary. Returns "" for blank text.
    virtual Task<std::string> translate(std::string text, std::string source,
                                        std::string target) = 0;
};

} // namespace tessarune
