#include "Tessarune/platform/translation-engine/OfflineTranslationService.h"

#include "Tessarune/platform/translation-engine/PairEngine.h"
#include "Tessarune/platform/translation-engine/TranslationFailure.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/host/Mutex.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <atomic>
#include <exception>
#include <map>
#include <utility>
#include <vector>

namespace tessarune {

struct OfflineTranslationService::Shared {
    Shared(Host& itsHost, ModelStore& itsStore, TranslationModelInventory& itsInventory,
           TranslationLimits itsLimits)
        : host(itsHost), store(itsStore), inventory(itsInventory), limits(itsLimits) {}

    Host& host;
    ModelStore& store;
    TranslationModelInventory& inventory;
    const TranslationLimits limits;
    std::atomic<bool> isOver = false;

    /// The engines of one model. The number of hung ones is limited, because each keeps its thread
    /// and its memory.
    struct Engines {
        std::weak_ptr<PairEngine> current;
        std::vector<std::weak_ptr<PairEngine>> hanging;
    };
    static constexpr std::size_t maximumHanging = 3;
    Mutex mutex;
    std::map<std::string, Engines> engines GUARDED_BY(mutex);

    std::shared_ptr<PairEngine> engineFor(const std::string& modelName) {
        const MutexLock lock(mutex);
        Engines& known = engines[modelName];
        std::shared_ptr<PairEngine> engine = known.current.lock();
        if (engine)
            return engine;
        std::erase_if(known.hanging, [](const auto& hanging) { return hanging.expired(); });
        if (known.hanging.size() >= maximumHanging)
            throw translationFailure(TranslationError::alreadyCancelled,
                                     localized("The translation engine does not answer."));
        engine = std::make_shared<PairEngine>(host, store, modelName);
        known.current = engine;
        return engine;
    }

    /// Abandons a hung engine: new sessions get another one.
    void abandon(const std::string& modelName, const std::shared_ptr<PairEngine>& engine) {
        const MutexLock lock(mutex);
        Engines& known = engines[modelName];
        if (known.current.lock() != engine)
            return;
        known.hanging.push_back(engine);
        known.current.reset();
    }
};

/// A session. Its operations share its state, which lives until the last of them has ended.
class OfflineTranslationService::Session final : public TranslationSession {
  public:
    Session(std::shared_ptr<OfflineTranslationService::Shared> service, std::string source,
            std::string target, Executor executor)
        : state_(std::make_shared<State>(std::move(service), std::move(source), std::move(target),
                                         std::move(executor))) {}
    ~Session() override { state_->isOver = true; }

    Task<bool> isReady() override { return readiness(state_); }
    Task<void> prepareTranslation() override { return prepare(state_); }
    Task<Response> translate(std::string text) override {
        return translateText(state_, std::move(text));
    }

  private:
    /// The model for the session's languages, and its engine.
    struct Route {
        std::string modelName;
        bool convertsToTraditional = false;
        std::shared_ptr<PairEngine> engine;
    };

    struct State {
        State(std::shared_ptr<Shared> itsService, std::string itsSource, std::string itsTarget,
              Executor itsExecutor)
            : service(std::move(itsService)),
              source(std::move(itsSource)),
              target(std::move(itsTarget)),
              executor(std::move(itsExecutor)) {}

        std::shared_ptr<Shared> service;
        std::string source;
        std::string target;
        Executor executor;
        std::atomic<bool> isOver = false;
        std::atomic<bool> wasAbandoned = false; ///< its engine did not answer within the time limit

        std::optional<Route> route; ///< only on the executor

        void requireAlive() const {
            if (wasAbandoned)
                throw translationFailure(
                    TranslationError::alreadyCancelled,
                    localized("The translation engine did not answer in time."));
            if (isOver || service->isOver)
                throw translationFailure(TranslationError::alreadyCancelled,
                                         localized("The translation session is over."));
        }

        /// Returns the route. Looks for a model if no earlier call has found one.
        Route findRoute() {
            requireAlive();
            if (route)
                return *route;
            const auto pair = service->inventory.pairFor(source, target);
            if (!pair)
                throw translationFailure(
                    TranslationError::unsupportedLanguagePairing,
                    localized("There is no translation from %@ to %@.", {source, target}));
            if (!service->store.find(ModelKind::translation, pair->modelName()))
                throw modelNotInstalled(pair->modelName());
            route = Route{pair->modelName(), pair->convertsToTraditional,
                          service->engineFor(pair->modelName())};
            return *route;
        }

        void abandon(const Route& hanging) {
            service->abandon(hanging.modelName, hanging.engine);
            wasAbandoned = true;
            route.reset();
            TessaruneLog::translation.notice(
                [&] { return "the engine of " + hanging.modelName + " does not answer"; });
            requireAlive(); // throws, because the session was abandoned
        }
    };
    using Pointer = std::shared_ptr<State>;

    /// Runs `work` on the pair's thread and resumes after `limit` seconds at the latest. Rethrows
    /// the exception of `work`. Hung work outlives the caller, so it must own everything it uses.
    template <typename Work>
    static Task<void> onEngine(Pointer state, double limit, Work work) {
        const Route route = state->findRoute();
        const Block block = [state, route, work] {
            state->requireAlive();
            work(route);
            state->requireAlive();
        };
        bool hasAnswered = false;
        try {
            hasAnswered =
                co_await runOnWithin(route.engine->executor(), limit, block, state->executor);
        } catch (...) {
            state->route.reset(); // another model may fit next time
            throw;
        }
        if (!hasAnswered)
            state->abandon(route);
    }

    static void load(const Route& route) { route.engine->load(); }
    static void warmUp(const Route& route) {
        route.engine->translate(warmUpText, route.convertsToTraditional);
    }

    static Task<bool> readiness(Pointer state) {
        try {
            co_await onEngine(state, state->service->limits.load, load);
            co_return true;
        } catch (const std::exception& failure) {
            TessaruneLog::translation.info([&] {
                return "no translation from " + state->source + " to " + state->target + ": " +
                       failure.what();
            });
            co_return false;
        }
    }

    static Task<void> prepare(Pointer state) {
        const TranslationLimits limits = state->service->limits;
        bool isUsable = true;
        try {
            co_await onEngine(state, limits.load, load);
        } catch (const TranslationServiceError& failure) {
            if (failure.kind() != TranslationError::notInstalled &&
                failure.kind() != TranslationError::internalError)
                throw;
            isUsable = false;
        }
        if (!isUsable)
            co_await fetchModel(state);
        // Loads the model as well if it has just been downloaded.
        co_await onEngine(state, limits.load + limits.translate, warmUp);
    }

    static Task<void> fetchModel(Pointer state) {
        try {
            co_await state->service->inventory.ensureInstalled(state->source, state->target,
                                                               state->executor);
        } catch (const std::exception& failure) {
            throw translationFailure(TranslationError::notInstalled, failure.what());
        }
        state->requireAlive();
    }

    static Task<Response> translateText(Pointer state, std::string text) {
        if (Text::trimmed(text).empty())
            throw translationFailure(TranslationError::nothingToTranslate,
                                     localized("There is nothing to translate."));
        const auto response = std::make_shared<Response>();
        const auto translate = [text, response](const Route& route) {
            response->targetText = route.engine->translate(text, route.convertsToTraditional);
        };
        co_await onEngine(state, state->service->limits.translate, translate);
        co_return *response;
    }

    Pointer state_;
};

namespace {

class Availability final : public LanguageAvailability {
  public:
    explicit Availability(TranslationModelInventory& inventory) : inventory_(inventory) {}

    Task<TranslationAvailabilityStatus> status(std::string from, std::string to) override {
        return statusOf(&inventory_, std::move(from), std::move(to));
    }

  private:
    static Task<TranslationAvailabilityStatus> statusOf(TranslationModelInventory* inventory,
                                                        std::string from, std::string to) {
        co_return inventory->status(from, to);
    }

    TranslationModelInventory& inventory_;
};

} // namespace

OfflineTranslationService::OfflineTranslationService(Host& host, ModelStore& store,
                                                     TranslationModelInventory& inventory,
                                                     TranslationLimits limits)
    : shared_(std::make_shared<Shared>(host, store, inventory, limits)) {}

OfflineTranslationService::~OfflineTranslationService() {
    shared_->isOver = true;
}

std::shared_ptr<LanguageAvailability> OfflineTranslationService::languageAvailability(Executor) {
    return std::make_shared<Availability>(shared_->inventory);
}

std::shared_ptr<TranslationSession> OfflineTranslationService::session(std::string installedSource,
                                                                       std::string target,
                                                                       Executor executor) {
    return std::make_shared<Session>(shared_, std::move(installedSource), std::move(target),
                                     std::move(executor));
}

} // namespace tessarune
