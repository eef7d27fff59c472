#include "Tessarune/platform/translation-engine/OfflineTranslationService.h"

#include "Tessarune/platform/translation-engine/PairEngine.h"
#include "Tessarune/platform/translation-engine/TranslationFailure.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Text.h"

#include <atomic>
#include <exception>
#include <map>
#include <mutex>
#include <utility>

namespace tessarune {

struct OfflineTranslationService::Shared {
    Shared(Host& itsHost, ModelStore& itsStore, TranslationModelInventory& itsInventory)
        : host(itsHost), store(itsStore), inventory(itsInventory) {}

    Host& host;
    ModelStore& store;
    TranslationModelInventory& inventory;
    std::atomic<bool> isOver = false;

    std::mutex mutex;
    std::map<std::string, std::weak_ptr<PairEngine>> engines; ///< guarded by the mutex

    std::shared_ptr<PairEngine> engineFor(const std::string& modelName) {
        const std::lock_guard lock(mutex);
        std::weak_ptr<PairEngine>& known = engines[modelName];
        std::shared_ptr<PairEngine> engine = known.lock();
        if (!engine) {
            engine = std::make_shared<PairEngine>(host, store, modelName);
            known = engine;
        }
        return engine;
    }
};

namespace {

/// Long enough to touch every part of the engine.
constexpr const char* warmUpText = "This is a short sentence.";

} // namespace

/// A session is what its operations share; they keep it until they have ended.
class OfflineTranslationService::Session final : public TranslationSession {
  public:
    Session(std::shared_ptr<OfflineTranslationService::Shared> service, std::string source,
            std::string target, Executor executor)
        : state_(std::make_shared<State>(std::move(service), std::move(source), std::move(target),
                                         std::move(executor))) {}
    ~Session() override { state_->isOver = true; }

    Task<bool> isReady() override { return readiness(state_); }
    Task<void> prepareTranslation() override { return prepared(state_); }
    Task<Response> translate(std::string text) override {
        return translated(state_, std::move(text));
    }

  private:
    struct Route {
        bool isForTraditional = false;
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

        std::optional<Route> route; ///< on the executor

        void requireAlive() const {
            if (isOver || service->isOver)
                throw translationFailure(TranslationError::alreadyCancelled,
                                         "The translation session is over.");
        }

        /// Looks for a model until one has been found.
        Route findRoute() {
            requireAlive();
            if (route)
                return *route;
            const auto pair = service->inventory.pairFor(source, target);
            if (!pair)
                throw translationFailure(TranslationError::unsupportedLanguagePairing,
                                         "There is no translation from " + source + " to " +
                                             target + ".");
            if (!service->store.find(ModelKind::translation, pair->modelName()))
                throw translationFailure(TranslationError::notInstalled,
                                         "The translation model " + pair->modelName() +
                                             " is not on this computer.");
            route = Route{pair->isForTraditional, service->engineFor(pair->modelName())};
            return *route;
        }
    };
    using Pointer = std::shared_ptr<State>;

    /// Runs `work` on the pair's thread and comes back; throws what it threw.
    template <typename Work>
    static Task<void> onEngine(Pointer state, Work work) {
        const Route route = state->findRoute();
        const SwitchTo there = switchTo(route.engine->executor());
        co_await there;
        std::exception_ptr failure;
        try {
            state->requireAlive();
            work(route);
            state->requireAlive();
        } catch (...) {
            failure = std::current_exception();
        }
        const SwitchTo back = switchTo(state->executor);
        co_await back;
        if (failure) {
            // Another model may serve the next time.
            state->route.reset();
            std::rethrow_exception(failure);
        }
    }

    static Task<bool> readiness(Pointer state) {
        try {
            const auto load = [](const Route& route) { route.engine->load(); };
            Task<void> loading = onEngine(state, load);
            co_await loading;
            co_return true;
        } catch (const std::exception& failure) {
            TessaruneLog::translation.info([&] {
                return "no translation from " + state->source + " to " + state->target + ": " +
                       failure.what();
            });
            co_return false;
        }
    }

    static Task<void> prepared(Pointer state) {
        const auto load = [service = state->service](const Route& route) {
            try {
                route.engine->load();
            } catch (const TranslationServiceError&) {
                if (const auto& damaged = route.engine->damaged())
                    service->inventory.forget(*damaged);
                throw;
            }
        };
        bool isThere = true;
        try {
            Task<void> loading = onEngine(state, load);
            co_await loading;
        } catch (const TranslationServiceError& failure) {
            if (failure.kind() != TranslationError::notInstalled)
                throw;
            isThere = false;
        }
        if (!isThere) {
            Task<void> bringing = brought(state);
            co_await bringing;
        }
        const auto warmUp = [](const Route& route) {
            route.engine->translate(warmUpText, route.isForTraditional);
        };
        Task<void> warming = onEngine(state, warmUp);
        co_await warming;
    }

    static Task<void> brought(Pointer state) {
        try {
            Task<void> bringing =
                state->service->inventory.bring(state->source, state->target, state->executor);
            co_await bringing;
        } catch (const std::exception& failure) {
            throw translationFailure(TranslationError::notInstalled, failure.what());
        }
        state->requireAlive();
    }

    static Task<Response> translated(Pointer state, std::string text) {
        if (Text::trimmed(text).empty())
            throw translationFailure(TranslationError::nothingToTranslate,
                                     "There is nothing to translate.");
        Response response;
        const auto translate = [&](const Route& route) {
            response.targetText = route.engine->translate(text, route.isForTraditional);
        };
        Task<void> translating = onEngine(state, translate);
        co_await translating;
        co_return response;
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
                                                     TranslationModelInventory& inventory)
    : shared_(std::make_shared<Shared>(host, store, inventory)) {}

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
