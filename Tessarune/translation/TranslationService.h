#pragma once

#include "TessaruneCore/LocalizedError.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/translation/Translator.h"

#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// The failures of the translation service that the program tells apart.
enum class TranslationError {
    unsupportedSourceLanguage,
    unsupportedTargetLanguage,
    unsupportedLanguagePairing,
    notInstalled,     ///< the pair's files are missing
    alreadyCancelled, ///< the `TranslationSession` has ended; a new one is needed
    unableToIdentifyLanguage,
    nothingToTranslate,
    internalError
};

/// The exception with which operations of the service fail. `kind` is `nullopt` if
/// `TranslationError` does not list the failure.
class TranslationServiceError : public LocalizedError {
  public:
    TranslationServiceError(std::optional<TranslationError> kind, const LocalizedError& error)
        : LocalizedError(error), kind_(kind) {}

    const std::optional<TranslationError>& kind() const { return kind_; }

  private:
    std::optional<TranslationError> kind_;
};

/// The status of language pairs. Languages are platform identifiers ("en-US").
class LanguageAvailability {
  public:
    virtual ~LanguageAvailability() = default;

    /// Does not fail, and does not use the network.
    virtual Task<TranslationAvailabilityStatus> status(std::string from, std::string to) = 0;
};

/// One language pair in use. Cheap to create: files are loaded on first use.
class TranslationSession {
  public:
    struct Response {
        std::string targetText;
    };

    virtual ~TranslationSession() = default;

    /// Whether the pair's files are installed and can be loaded.
    virtual Task<bool> isReady() = 0;
    /// Downloads the files of the pair if they are missing or unusable, and loads the pair.
    virtual Task<void> prepareTranslation() = 0;
    virtual Task<Response> translate(std::string text) = 0;
};

/// Interface: the offline translator of this computer.
///
/// The caller owns the objects made here. The operations of an object may run concurrently; they
/// start and resume on the given executor, and the object must live until all of them have ended.
class TranslationService {
  public:
    virtual ~TranslationService() = default;

    virtual std::shared_ptr<LanguageAvailability> languageAvailability(Executor executor) = 0;
    virtual std::shared_ptr<TranslationSession> session(std::string installedSource,
                                                        std::string target, Executor executor) = 0;
};

} // namespace tessarune
