#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "Tessarune/platform/translation-engine/LanguagePairs.h"
#include "Tessarune/platform/translation-engine/TranslationEngine.h"
#include "TessaruneCore/host/Executor.h"
#include "TessaruneCore/host/Task.h"

#include <memory>
#include <string>

namespace tessarune {

/// A sentence that touches every part of the engine.
inline constexpr const char* warmUpText = "This is a short sentence.";

/// The engine of one language pair and the thread that it lives on. Made and dropped anywhere;
/// dropping it waits for what is running there, unless that itself drops it. Store and host must
/// outlive it.
class PairEngine {
  public:
    PairEngine(Host& host, ModelStore& store, const std::string& modelName);
    ~PairEngine();
    PairEngine(const PairEngine&) = delete;
    PairEngine& operator=(const PairEngine&) = delete;

    const Executor& executor() const { return executor_; }

    // On the executor alone. Each throws TranslationServiceError: `notInstalled` if the files are
    // not there or no longer what they were, `internalError` with the engine's own text.

    /// Verifies and loads the files, where that has not been done or they are gone since.
    void load();
    /// Loads first if need be. `isForTraditional` as of the pair.
    std::string translate(const std::string& text, bool isForTraditional);

    /// Loads a model that lies anywhere, translates one sentence and drops it, on `host`'s queue of
    /// its own. Throws ModelDamaged if that does not work, and TranslationServiceError if it takes
    /// longer than `seconds`. Begun and ended on the main queue.
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
