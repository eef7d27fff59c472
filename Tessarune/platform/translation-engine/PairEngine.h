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

/// The engine of one language pair and its thread. May be created and dropped on any thread;
/// dropping it waits for running work, unless that work drops it. Store and host must outlive it.
class PairEngine {
  public:
    PairEngine(Host& host, ModelStore& store, const std::string& modelName);
    ~PairEngine();
    PairEngine(const PairEngine&) = delete;
    PairEngine& operator=(const PairEngine&) = delete;

    const Executor& executor() const { return executor_; }

    // Call on the executor only. Each throws TranslationServiceError: `notInstalled` if the files
    // are missing or changed, `internalError` with the engine's own text.

    /// Verifies and loads the files, unless they are loaded and still there.
    void load();
    /// Loads first if necessary. `isForTraditional` is the pair's.
    std::string translate(const std::string& text, bool isForTraditional);

    /// Loads a model from any folder, translates one sentence and drops it, on a queue of its own.
    /// Throws ModelDamaged if that fails, and TranslationServiceError if it takes longer than
    /// `seconds`. Starts and resumes on the main queue.
    static Task<void> tryOut(Host& host, StoredModel model, double seconds);

  private:
    struct Loaded;
    bool filesStand() const;

    ModelStore& store_;
    std::string modelName_;
    Executor executor_;
    std::shared_ptr<Loaded> loaded_;
};

} // namespace tessarune
