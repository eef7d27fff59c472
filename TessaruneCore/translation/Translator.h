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

/// Seam between the translation logic and the offline translation service. Languages are the
/// identifiers of `TranslationSupport`.
///
/// The operations may run side by side. Each is started and goes on on the executor that the
/// translator was made for, and the caller keeps the translator alive until it has ended. Failures
/// are `TranslatorError`s.
class Translator {
  public:
    virtual ~Translator() = default;

    /// Does not fail.
    virtual Task<TranslationAvailabilityStatus> availabilityStatus(std::string source,
                                                                   std::string target) = 0;
    /// Gets what the pair needs and loads it; returns at once for a pair that is ready.
    virtual Task<void> prepareLanguages(std::string source, std::string target) = 0;
    /// Drops all that is known of the pair and prepares it anew.
    virtual Task<void> rebuildLanguagePair(std::string source, std::string target) = 0;
    /// Prepares the pair first if need be. Blank text gives "".
    virtual Task<std::string> translate(std::string text, std::string source,
                                        std::string target) = 0;
};

} // namespace tessarune
