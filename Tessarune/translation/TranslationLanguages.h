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
    std::string id; ///< of `TranslationSupport::targetLanguages`
    TranslationAvailabilityStatus status = TranslationAvailabilityStatus::unsupported;
    /// On the disk, or what a download brings; 0 while that is unknown.
    std::uint64_t bytes = 0;
    bool isRemovable = false; ///< false too for one that came with the program
    std::string damage;       ///< what is wrong with one on the disk; empty if nothing was seen

    bool operator==(const TranslationLanguageState&) const = default;
};

/// Bytes that have arrived and bytes that are expected in all (0 while that is unknown).
struct TranslationDownloadProgress {
    std::uint64_t received = 0;
    std::uint64_t expected = 0;
};

/// The languages that English can be translated to: listing, downloading and removing them. Main
/// queue.
class TranslationLanguages {
  public:
    virtual ~TranslationLanguages() = default;

    /// All targets, in the order in which they are offered.
    virtual std::vector<TranslationLanguageState> list() const = 0;

    /// Brings a language, or brings it anew if it is damaged; nothing happens if it is there.
    /// Throws with a text that can be shown: also for an `id` that is none or has no model, and
    /// when `stop` asks to end before it is done; what has arrived by then is kept for the next
    /// attempt. `progress`, which may be empty, is called on the main queue.
    virtual Task<void> download(std::string id,
                                std::function<void(TranslationDownloadProgress)> progress,
                                std::stop_token stop) = 0;

    /// Throws with a text that can be shown, also for a language that came with the program and for
    /// an `id` that is none.
    virtual void remove(const std::string& id) = 0;
};

} // namespace tessarune
