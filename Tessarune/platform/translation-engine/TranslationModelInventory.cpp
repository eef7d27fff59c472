#include "Tessarune/platform/translation-engine/TranslationModelInventory.h"

#include "Tessarune/platform/translation-engine/PairEngine.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/host/Mutex.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <map>
#include <vector>

namespace tessarune {

namespace {

constexpr const char* catalogueName = "catalogue.json";
/// The published catalogue is smaller than one megabyte.
constexpr std::uint64_t maximumCatalogueBytes = 16'000'000;
/// A generous limit: loading a model and translating a sentence takes about a hundredth of it.
constexpr double trialSeconds = 30;

[[noreturn]] void throwUnsupported(const std::string& id) {
    throw std::runtime_error(localized("There is no translation into the language %@.", {id}));
}

/// A source and a target language, as the translation service names them.
struct Languages {
    std::string source;
    std::string target;

    auto operator<=>(const Languages&) const = default;
};

/// The languages for an offered target; throws for any other.
Languages languagesFor(const std::string& id) {
    if (TranslationSupport::targetLanguage(id) == nullptr)
        throwUnsupported(id);
    return {TranslationSupport::appleLanguageIdentifier(TranslationSupport::defaultSourceLanguage),
            TranslationSupport::appleLanguageIdentifier(id)};
}

} // namespace

struct TranslationModelInventory::Shared {
    Shared(Host& itsHost, ModelStore& itsStore, ModelInstaller& itsInstaller,
           TranslationCatalogueSource itsSource, ModelTrial itsTrial)
        : host(itsHost),
          main(Executor::main(itsHost)),
          store(itsStore),
          installer(itsInstaller),
          downloader(itsStore.files(), itsInstaller.policy()),
          source(std::move(itsSource)),
          trial(std::move(itsTrial)) {
        if (!trial)
            trial = [&itsHost](StoredModel model) {
                return PairEngine::tryOut(itsHost, std::move(model), trialSeconds);
            };
    }

    Host& host;
    Executor main;
    ModelStore& store;
    ModelInstaller& installer;
    Downloader downloader;
    TranslationCatalogueSource source;
    ModelTrial trial;
    std::function<void(const std::string& id)> onInstalled;
    std::shared_ptr<SerialQueue> network; ///< for the fetch of the catalogue; created on first use
    std::stop_source ending;

    using Pointer = std::shared_ptr<Shared>;
    using Waiters = std::vector<OneShot<std::exception_ptr>>;
    std::map<Languages, Waiters> runningInstallations; ///< main queue

    mutable Mutex mutex;
    mutable std::shared_ptr<const TranslationCatalogue> current GUARDED_BY(mutex);

    std::filesystem::path catalogueFile() const {
        return store.folder(ModelKind::translation, "any").parent_path() / catalogueName;
    }

    std::shared_ptr<const TranslationCatalogue> catalogue() const {
        const MutexLock lock(mutex);
        if (!current)
            current = std::make_shared<const TranslationCatalogue>(cachedCatalogue());
        return current;
    }

    TranslationCatalogue cachedCatalogue() const {
        try {
            if (store.files().exists(catalogueFile()))
                return TranslationCatalogue::parse(store.files().read(catalogueFile()), source);
        } catch (const std::exception& failure) {
            TessaruneLog::translation.notice(
                [&] { return std::string("the cached catalogue is unusable: ") + failure.what(); });
        }
        return TranslationCatalogue::builtIn();
    }

    std::optional<StoredModel> findIntact(const TranslationPair& pair) const {
        std::optional<StoredModel> model = store.find(ModelKind::translation, pair.modelName());
        return model && model->damage.empty() ? model : std::nullopt;
    }

    /// Fetches the newest catalogue. If that fails it throws, and the current one stays in use.
    static Task<void> refreshCatalogue(Pointer self, std::stop_token stop) {
        if (!self->network)
            self->network = self->host.serialQueue("tessarune.catalogue", QueuePriority::utility);
        std::stop_source stopEither;
        const auto requestStop = [&stopEither] { stopEither.request_stop(); };
        const std::stop_callback onStop(stop, requestStop);
        const std::stop_callback onEnd(self->ending.get_token(), requestStop);
        const Executor network = Executor::queue(self->host, self->network);
        co_await runOn(network, fetchCatalogue(self, network, stopEither.get_token()), self->main);
    }

    static Task<void> fetchCatalogue(Pointer self, Executor network, std::stop_token stop) {
        const std::string text = co_await self->downloader.fetchText(
            network, localized("The list of translation models"), self->source.records,
            maximumCatalogueBytes, stop);
        auto fetched = std::make_shared<const TranslationCatalogue>(
            TranslationCatalogue::parse(text, self->source));
        self->store.files().createDirectories(self->catalogueFile().parent_path());
        self->store.files().writeAtomically(self->catalogueFile(), text);
        const MutexLock lock(self->mutex);
        self->current = std::move(fetched);
    }

    static Task<void> install(Pointer self, Languages languages,
                              ModelInstaller::ProgressHandler progress, std::stop_token stop) {
        const std::string currentFlaw = co_await flaw(self, languages, self->trial);
        if (currentFlaw.empty())
            co_return;
        std::exception_ptr failure;
        try {
            co_await refreshCatalogue(self, stop);
        } catch (const DownloadStopped&) {
            throw;
        } catch (...) {
            failure = std::current_exception();
        }
        // The pair is chosen after the refresh, because a newer catalogue may list a better pair.
        const std::optional<TranslationPair> pair = self->pairFor(languages);
        std::optional<AvailableModel> model = pair ? self->catalogue()->model(*pair) : std::nullopt;
        if (!model && failure)
            std::rethrow_exception(failure);
        if (!model)
            throw std::runtime_error(localized("There is no translation model from %@ to %@.",
                                               {languages.source, languages.target}));
        model->trial = self->trial;
        co_await self->installer.install(std::move(*model), std::move(progress), stop);
    }

    /// Main queue. Starts an installation, or joins the running one for the same languages.
    static void startOrJoin(const Pointer& self, const Languages& languages,
                            const OneShot<std::exception_ptr>& outcome) {
        Waiters& waiters = self->runningInstallations[languages];
        waiters.push_back(outcome);
        if (waiters.size() == 1)
            spawn(self->main, run(self, languages));
    }

    static Task<void> run(Pointer self, Languages languages) {
        std::exception_ptr failure;
        try {
            co_await install(self, languages, nullptr, std::stop_token());
        } catch (...) {
            failure = std::current_exception();
        }
        const auto job = self->runningInstallations.extract(languages);
        for (const auto& waiter : job.mapped())
            waiter.resume(failure);
    }

    static Task<std::string> flaw(Pointer self, Languages languages, ModelTrial trial) {
        const std::optional<TranslationPair> pair = self->pairFor(languages);
        if (!pair)
            co_return localized("There is no translation from %@ to %@.",
                                {languages.source, languages.target});
        co_return co_await self->installer.flaw(ModelKind::translation, pair->modelName(),
                                                std::move(trial));
    }

    std::optional<TranslationPair> pairFor(const Languages& languages) const {
        const std::vector<TranslationPair> candidates =
            LanguagePairs::candidates(languages.source, languages.target);
        const auto known = catalogue();
        // A pair whose output must be converted to traditional characters is the last choice.
        for (const bool convertsToTraditional : {false, true}) {
            for (const TranslationPair& pair : candidates) {
                if (pair.convertsToTraditional == convertsToTraditional && findIntact(pair))
                    return pair;
            }
            for (const TranslationPair& pair : candidates) {
                if (pair.convertsToTraditional == convertsToTraditional && known->lists(pair))
                    return pair;
            }
        }
        return std::nullopt;
    }

    TranslationLanguageState stateOf(const std::string& id) const {
        TranslationLanguageState state;
        state.id = id;
        const std::optional<TranslationPair> pair = pairFor(languagesFor(id));
        if (!pair)
            return state;
        const std::optional<StoredModel> model =
            store.find(ModelKind::translation, pair->modelName());
        state.status = TranslationAvailabilityStatus::supported;
        if (model) {
            state.bytes = model->bytes();
            state.isRemovable = model->isRemovable;
            state.damage = model->damage;
            if (model->damage.empty())
                state.status = TranslationAvailabilityStatus::installed;
        } else if (const auto available = catalogue()->model(*pair)) {
            for (const FileToFetch& file : available->files)
                state.bytes += file.bytes;
        }
        return state;
    }

    static Task<void> download(Pointer self, std::string id,
                               std::function<void(TranslationDownloadProgress)> progress,
                               std::stop_token stop) {
        const Languages languages = languagesFor(id);
        if (!self->pairFor(languages))
            throwUnsupported(id);
        ModelInstaller::ProgressHandler handler;
        if (progress) {
            handler = [progress = std::move(progress)](ModelInstaller::Progress now) {
                progress({now.received, now.expected});
            };
        }
        co_await install(self, languages, std::move(handler), std::move(stop));
        if (self->onInstalled && !self->ending.stop_requested())
            self->onInstalled(id);
    }

    void remove(const std::string& id) const {
        const std::optional<TranslationPair> pair = pairFor(languagesFor(id));
        if (!pair)
            throwUnsupported(id);
        store.remove(ModelKind::translation, pair->modelName());
    }
};

TranslationModelInventory::TranslationModelInventory(Host& host, ModelStore& store,
                                                     ModelInstaller& installer,
                                                     TranslationCatalogueSource source,
                                                     ModelTrial trial)
    : shared_(
          std::make_shared<Shared>(host, store, installer, std::move(source), std::move(trial))) {}

TranslationModelInventory::~TranslationModelInventory() {
    shared_->ending.request_stop();
    if (shared_->network)
        shared_->network->sync([] {}); // the fetch may still be writing to the disk
}

std::optional<TranslationPair> TranslationModelInventory::pairFor(std::string_view source,
                                                                  std::string_view target) const {
    return shared_->pairFor({std::string(source), std::string(target)});
}

TranslationAvailabilityStatus TranslationModelInventory::status(std::string_view source,
                                                                std::string_view target) const {
    const std::optional<TranslationPair> pair = pairFor(source, target);
    if (!pair)
        return TranslationAvailabilityStatus::unsupported;
    return shared_->findIntact(*pair) ? TranslationAvailabilityStatus::installed
                                      : TranslationAvailabilityStatus::supported;
}

Task<void> TranslationModelInventory::ensureInstalled(std::string source, std::string target,
                                                      Executor executor) {
    const std::shared_ptr<Shared> shared = shared_;
    const Languages languages{std::move(source), std::move(target)};
    OneShot<std::exception_ptr> outcome(executor);
    shared->main.run(
        [shared, languages, outcome] { Shared::startOrJoin(shared, languages, outcome); });
    const std::exception_ptr failure = co_await outcome;
    if (failure)
        std::rethrow_exception(failure);
}

std::vector<TranslationLanguageState> TranslationModelInventory::list() const {
    std::vector<TranslationLanguageState> states;
    for (const auto& language : TranslationSupport::targetLanguages())
        states.push_back(shared_->stateOf(language.id));
    return states;
}

Task<void>
TranslationModelInventory::download(std::string id,
                                    std::function<void(TranslationDownloadProgress)> progress,
                                    std::stop_token stop) {
    return Shared::download(shared_, std::move(id), std::move(progress), std::move(stop));
}

Task<std::string> TranslationModelInventory::flaw(std::string id) {
    return Shared::flaw(shared_, languagesFor(id), {});
}

void TranslationModelInventory::remove(const std::string& id) {
    shared_->remove(id);
}

void TranslationModelInventory::setInstalledHandler(
    std::function<void(const std::string& id)> handler) {
    shared_->onInstalled = std::move(handler);
}

} // namespace tessarune
