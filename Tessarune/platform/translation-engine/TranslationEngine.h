#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tessarune {

namespace translationABI {
struct Engine;
}

/// The engine failed to load or to translate; the text contains the reason.
struct TranslationEngineError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The translation engine with the model of one language pair; takes about 40 MB of memory.
/// Created, used and destroyed on one thread.
class TranslationEngine {
  public:
    /// If the two languages share a vocabulary, both vocabulary paths name the same file.
    struct Files {
        std::filesystem::path model;
        std::filesystem::path sourceVocabulary;
        std::filesystem::path targetVocabulary;
    };

    /// The files must have been verified, because the engine does not detect all damage. The
    /// model's file stays mapped into memory. Throws TranslationEngineError.
    explicit TranslationEngine(const Files& files);
    ~TranslationEngine();
    TranslationEngine(const TranslationEngine&) = delete;
    TranslationEngine& operator=(const TranslationEngine&) = delete;

    /// Translates one or more sentences of any length; keeps white space around and between them.
    /// Takes milliseconds per sentence. Throws TranslationEngineError.
    std::string translate(std::string_view text) const;

  private:
    translationABI::Engine* engine_;
};

/// Where the models for this version of the engine are published.
struct TranslationCatalogueSource {
    std::string records;     ///< address of the list of files
    std::string attachments; ///< base address of the files, without a slash at the end
    int majorVersion = 0;    ///< the major version that the engine reads

    static TranslationCatalogueSource ofEngine();
};

} // namespace tessarune
