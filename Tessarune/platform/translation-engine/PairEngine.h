#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "Tessarune/platform/translation-engine/LanguagePairs.h"
#include "Tessarune/platform/translation-engine/TranslationEngine.h"
#include "TessaruneCore/host/Executor.h"
#include "TessaruneCore/host/Task.h"

#include <memory>
#include <string>

namespace tessarune {

/// A sentence that exercises every part of the engine.
inline constexpr const char* warmUpText = "This is a short sentence.";

/// The engine of one language pair and its thread. May be created and destroyed on any thread. Work
/// on the executor must share the ownership of the engine that it uses. Store and host must outlive
/// the engine.
class PairEngine {
  public:
    PairEngine(Host& host, ModelStore& store, const std::string& modelName);
    ~PairEngine();
    PairEngine(const PairEngine&) = delete;
    PairEngine& operator=(const PairEngine&) = delete;

    const Executor& executor() const { return executor_; }

    // `load` and `translate` run on the executor only. They throw TranslationServiceError:
    // `notInstalled` if the files are missing or changed, otherwise `internalError` with the text
    // of the failure. After a failure of `translate`, the next call loads the files again.

    /// Verifies and loads the files, unless they are loaded and their sizes are unchanged.
    void load();
    /// Loads the files first if necessary. `convertsToTraditional` as in TranslationPair.
    std::string translate(const std::string& text, bool convertsToTraditional);

    /// Tests a model in any folder: loads it and translates one sentence, on a separate queue.
    /// Throws ModelDamaged if that fails, and TranslationServiceError if it takes longer than
    /// `seconds`. Starts and resumes on the main queue.
    static Task<void> tryOut(Host& host, StoredModel model, double seconds);

  private:
    struct Loaded;
    bool haveFilesSameSizes() const;

    ModelStore& store_;
    std::string modelName_;
    Executor executor_;
    std::shared_ptr<Loaded> loaded_;
};

} // namespace tessarune
