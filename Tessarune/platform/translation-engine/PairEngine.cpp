#include "Tessarune/platform/translation-engine/PairEngine.h"

#include "Tessarune/platform/translation-engine/TraditionalChinese.h"
#include "Tessarune/platform/translation-engine/TranslationCatalogue.h"
#include "Tessarune/platform/translation-engine/TranslationFailure.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Localization.h"

#include <malloc.h>

#include <algorithm>
#include <system_error>

namespace tessarune {

namespace {

/// Returns freed memory to the system. A destroyed engine frees the many small blocks of its
/// vocabularies, which the C library would keep.
void returnFreedMemory() {
    malloc_trim(0);
}

} // namespace

struct PairEngine::Loaded {
    explicit Loaded(StoredModel what) : model(std::move(what)), engine(translationFilesOf(model)) {}

    StoredModel model;
    TranslationEngine engine;
    std::unique_ptr<TraditionalChinese> traditional;
};

PairEngine::PairEngine(Host& host, ModelStore& store, const std::string& modelName)
    : store_(store),
      modelName_(modelName),
      executor_(Executor::queue(host, host.serialQueue("tessarune.translate." + modelName,
                                                       QueuePriority::userInitiated))) {}

/// The loaded engine is destroyed on the executor, whichever thread destroys this object.
PairEngine::~PairEngine() {
    executor_.run([loaded = std::move(loaded_)]() mutable {
        loaded.reset();
        returnFreedMemory();
    });
}

/// Compares sizes only, because it runs before each translation. Call only while an engine is
/// loaded.
bool PairEngine::haveFilesSameSizes() const {
    const StoredModel& model = loaded_->model;
    return std::all_of(model.files.begin(), model.files.end(), [&](const ModelFile& file) {
        try {
            return store_.files().size(model.path(file.name)) == file.bytes;
        } catch (const std::system_error&) {
            return false;
        }
    });
}

void PairEngine::load() {
    if (loaded_ && haveFilesSameSizes())
        return;
    loaded_.reset();
    const std::optional<StoredModel> model = store_.find(ModelKind::translation, modelName_);
    if (!model)
        throw modelNotInstalled(modelName_);
    try {
        ModelStore::verify(*model);
        loaded_ = std::make_shared<Loaded>(*model);
        TessaruneLog::translation.notice(
            [&] { return "translation model " + modelName_ + " loaded"; });
    } catch (const ModelDamaged& damage) {
        throw translationFailure(TranslationError::notInstalled, damage.what());
    } catch (const std::exception& failure) {
        throw translationFailure(TranslationError::internalError, failure.what());
    }
}

std::string PairEngine::translate(const std::string& text, bool convertsToTraditional) {
    load();
    try {
        std::string translation = loaded_->engine.translate(text);
        if (!convertsToTraditional)
            return translation;
        if (!loaded_->traditional)
            loaded_->traditional = std::make_unique<TraditionalChinese>();
        return loaded_->traditional->of(translation);
    } catch (const std::exception& failure) {
        loaded_.reset(); // the engine's state is unknown
        throw translationFailure(TranslationError::internalError, failure.what());
    }
}

Task<void> PairEngine::tryOut(Host& host, StoredModel model, double seconds) {
    const Executor trialQueue =
        Executor::queue(host, host.serialQueue("tessarune.trial", QueuePriority::utility));
    const Block trial = [model] {
        try {
            const TranslationEngine engine(translationFilesOf(model));
            if (engine.translate(warmUpText).empty())
                throw std::runtime_error(
                    localized("%@ produces an empty translation.", {model.name}));
        } catch (const std::exception& failure) {
            throw ModelDamaged(failure.what());
        }
        returnFreedMemory();
    };
    if (!co_await runOnWithin(trialQueue, seconds, trial, Executor::main(host)))
        throw translationFailure(TranslationError::internalError,
                                 localized("The translation engine did not answer in time."));
}

} // namespace tessarune
