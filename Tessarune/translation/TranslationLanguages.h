#pragma once

#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/translation/Translator.h"

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace tessarune {

/// A target language as a user sees it.
struct TranslationLanguageState {
    std::string id; ///< as in `TranslationSupport::targetLanguages`
    TranslationAvailabilityStatus status = TranslationAvailabilityStatus::unsupported;
    /// The size on the disk if there are files; otherwise the size of the download, 0 if unknown.
    std::uint64_t bytes = 0;
    bool isRemovable = false; ///< false also if the language came with the program
    std::string damage;       ///< what is wrong with the files; empty if they are intact

    bool operator==(const TranslationLanguageState&) const = default;
};

/// Bytes received and bytes expected in all (0 if unknown).
struct TranslationDownloadProgress {
    std::uint64_t received = 0;
    std::uint64_t expected = 0;
};

/// Interface: lists, downloads and removes the languages that English can be translated to. Main
/// queue.
class TranslationLanguages {
  public:
    virtual ~TranslationLanguages() = default;

    /// All targets, in the order in which they are offered.
    virtual std::vector<TranslationLanguageState> list() const = 0;

    /// Downloads a language, or replaces a damaged one; does nothing if it is installed. Throws
    /// with a text that can be shown, also for an unknown `id` and for a language without a model.
    /// If `stop` ends the download early, this throws, too, and keeps the bytes received so far for
    /// the next attempt. `progress` may be empty and is called on the main queue.
    virtual Task<void> download(std::string id,
                                std::function<void(TranslationDownloadProgress)> progress,
                                std::stop_token stop) = 0;

    /// Throws with a text that can be shown, also for a language that came with the program and for
    /// an unknown `id`.
    virtual void remove(const std::string& id) = 0;
};

} // namespace tessarune
