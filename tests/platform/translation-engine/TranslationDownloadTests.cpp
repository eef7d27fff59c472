// Translation models from a local server that fails as instructed. Where a model has to work, it is
// the real one, compressed as it would be published.

#include "tests/platform/translation-engine/PublishedModels.h"
#include "tests/platform/translation-engine/TranslationFixture.h"

#include <algorithm>

using namespace tessarune;
using namespace tessarune::testing;

namespace {

class TranslationDownloadTest : public TranslationFixture {
  protected:
    explicit TranslationDownloadTest(ModelTrial trial = acceptAnything)
        : TranslationFixture({}, std::move(trial)) {
        const TranslationCatalogueSource engine = TranslationCatalogueSource::ofEngine();
        const auto path = [](const std::string& url) {
            return "/" + url.substr(url.find("://") + 3);
        };
        records_ = path(engine.records);
        attachments_ = path(engine.attachments) + "/";
    }

    /// Serves a model from English to `target`, and a list with that model only.
    std::vector<std::string> publish(const std::string& target, const std::string& model,
                                     const std::string& vocabulary) {
        const std::vector<nlohmann::json> records{record("en", target, "model", model),
                                                  record("en", target, "vocab", vocabulary)};
        std::vector<std::string> paths;
        for (const auto& made : records)
            paths.push_back(attachments_ + made["attachment"]["location"].get<std::string>());
        server.on(records_, catalogueOf(records));
        server.on(paths[0], packed(model));
        server.on(paths[1], packed(vocabulary));
        return paths;
    }
    std::vector<std::string> publishPortuguese() {
        const auto real = std::filesystem::path(TESSARUNE_MODELS) / "translation" / "en-pt";
        return publish("pt", contentsOf(real / portugueseModel),
                       contentsOf(real / portugueseVocabulary));
    }

    std::size_t requestsFor(const std::string& path) const {
        const auto all = server.requests();
        return static_cast<std::size_t>(std::count_if(
            all.begin(), all.end(), [&](const Request& request) { return request.path == path; }));
    }

    std::string ensureInstalled(const std::string& target) {
        return run(inventory.ensureInstalled("en-US", target, Executor::main(host))).failure;
    }

    TranslationLanguageState state(const std::string& id) {
        const auto all = inventory.list();
        return *std::find_if(all.begin(), all.end(),
                             [&](const auto& language) { return language.id == id; });
    }

    static Task<void> acceptAnything(StoredModel) { co_return; }

    std::string records_;
    std::string attachments_;
};

/// The engine decides whether a model is usable.
class TriedTranslationDownloadTest : public TranslationDownloadTest {
  protected:
    TriedTranslationDownloadTest() : TranslationDownloadTest(ModelTrial()) {}
};

} // namespace

TEST_F(TriedTranslationDownloadTest, AModelThatTheEngineCannotLoadIsNoSuccess) {
    const auto real = std::filesystem::path(TESSARUNE_MODELS) / "translation" / "en-pt";
    const std::string model = contentsOf(real / portugueseModel);
    const std::string vocabulary = contentsOf(real / portugueseVocabulary);
    const auto broken = publish("pt", model, vocabulary.substr(0, vocabulary.size() / 2));
    EXPECT_NE(ensureInstalled("pt-BR").find("cannot be used"), std::string::npos);
    EXPECT_EQ(requestsFor(broken[1]), 1u);
    EXPECT_EQ(status("en-US", "pt-BR"), "supported");

    // An earlier version of the program has installed a model that is invalid.
    const std::filesystem::path partial = store.partialFolder(ModelKind::translation, "en-pt");
    std::filesystem::create_directories(partial);
    writeContents(partial / "model.enpt.bin", model);
    writeContents(partial / "vocab.enpt.spm", "no vocabulary");
    store.adopt(ModelKind::translation, "en-pt", {"model.enpt.bin", "vocab.enpt.spm"}, {});
    const auto portuguese = session("pt-BR");
    EXPECT_NE(run(portuguese->prepareTranslation()).failure.find("cannot be used"),
              std::string::npos);
    EXPECT_EQ(requestsFor(broken[1]), 2u) << "the broken model is fetched once more";
    EXPECT_EQ(status("en-US", "pt-BR"), "installed") << "it stays until a working one replaces it";
    publishPortuguese();
    EXPECT_EQ(run(portuguese->prepareTranslation()).failure, "");
    EXPECT_EQ(run(portuguese->translate("Hello, world!")).text, "Olá, mundo!");
}

TEST_F(TranslationDownloadTest, PreparingFetchesWhatIsMissingAndThenTranslates) {
    const auto paths = publishPortuguese();
    const std::string model = packed(contentsOf(std::filesystem::path(TESSARUNE_MODELS) /
                                                "translation/en-pt" / portugueseModel));
    server.on(paths[0], [&](const Request& request) {
        if (request.number == 0) // cut in the middle
            return Reply::cut(model, model.size() / 2);
        return Reply::whole(model);
    });
    const auto portuguese = session("pt-BR");
    EXPECT_EQ(status("en-US", "pt-BR"), "supported");
    EXPECT_EQ(run(portuguese->translate("Hello, world!")).kind, TranslationError::notInstalled);
    EXPECT_TRUE(server.requests().empty());

    EXPECT_EQ(run(portuguese->prepareTranslation()).failure, "");
    EXPECT_EQ(status("en-US", "pt-BR"), "installed");
    EXPECT_EQ(run(portuguese->translate("Hello, world!")).text, "Olá, mundo!");
    EXPECT_EQ(requestsFor(paths[0]), 2u);
    const auto requests = server.requests();
    EXPECT_TRUE(std::any_of(requests.begin(), requests.end(), [&](const Request& request) {
        return request.rangeStart.value_or(0) > 0;
    })) << "the download continues where it was cut";

    server.forget();
    EXPECT_EQ(run(portuguese->prepareTranslation()).failure, "");
    EXPECT_TRUE(server.requests().empty()) << "nothing is fetched twice";

    // Preparing again repairs damage that only a checksum reveals.
    const StoredModel stored = store.find(ModelKind::translation, "en-pt").value();
    const std::string vocabulary = stored.files.at(1).name;
    std::string bytes = contentsOf(stored.path(vocabulary));
    bytes[1000] ^= 1;
    writeContents(stored.path(vocabulary), bytes);
    service = std::make_unique<OfflineTranslationService>(host, store, inventory);
    const auto fresh = session("pt-BR");
    EXPECT_EQ(run(fresh->isReady()).text, "no");
    EXPECT_EQ(run(fresh->prepareTranslation()).failure, "");
    EXPECT_EQ(run(fresh->translate("Hello, world!")).text, "Olá, mundo!");
}

TEST_F(TranslationDownloadTest, OneDownloadServesAllCallers) {
    const auto paths = publish("fr", "no model", "no vocabulary");
    const Executor main = Executor::main(host);
    auto dropped = session("fr-FR");
    const auto cancelled = begin(dropped->prepareTranslation());
    std::vector<std::shared_ptr<Outcome>> waiting;
    for (int i = 0; i < 3; ++i)
        waiting.push_back(begin(inventory.ensureInstalled("en-US", "fr-FR", main)));
    dropped.reset();
    finish();
    for (const auto& outcome : waiting)
        EXPECT_EQ(outcome->failure, "");
    EXPECT_EQ(cancelled->kind, TranslationError::alreadyCancelled);
    for (const std::string& path : {records_, paths[0], paths[1]})
        EXPECT_EQ(requestsFor(path), 1u) << path;
    EXPECT_EQ(status("en-US", "fr-FR"), "installed");
}

TEST_F(TranslationDownloadTest, CatalogueIsFetchedOverABadNetworkOrTheFailureIsReported) {
    publish("fr", "no model", "no vocabulary");
    const std::string good = catalogueOf(
        {record("en", "fr", "model", "no model"), record("en", "fr", "vocab", "no vocabulary")});
    struct Case {
        const char* name;
        FaultyServer::Answer answer;
        const char* failure; ///< part of the failure's text; empty if the fetch must succeed
    };
    const auto cutAtFirst = [&good](const Request& request) {
        return request.number == 0 ? Reply::cut(good, good.size() / 2) : Reply::whole(good);
    };
    const auto always = [](Reply reply) { return [reply](const Request&) { return reply; }; };
    const std::string half = good.substr(0, good.size() / 2);
    const char* const undone = "could not be downloaded";
    const char* const absent = "no translation model from en-US to fr-FR";
    for (const auto& [name, answer, failure] :
         {Case{"cut", cutAtFirst, ""}, Case{"not there", always(Reply::failure(404)), "404"},
          Case{"a login page", always(Reply::whole("<html>Log in here</html>")), "is invalid"},
          Case{"half a list", always(Reply::whole(half)), "is invalid"},
          Case{"too long", always(Reply::whole(std::string(17'000'000, ' '))), undone},
          Case{"another language", always(Reply::whole(catalogueOfPairs({{"en", "de"}}))),
               absent}}) {
        TranslationModelInventory fresh(host, store, installer,
                                        TranslationCatalogueSource::ofEngine(), acceptAnything);
        server.forget();
        server.on(records_, answer);
        const auto outcome = run(fresh.ensureInstalled("en-US", "fr-FR", Executor::main(host)));
        if (std::string(failure).empty()) {
            EXPECT_EQ(outcome.failure, "") << name;
            EXPECT_EQ(fresh.status("en-US", "fr-FR"), TranslationAvailabilityStatus::installed);
            fresh.remove("fr");
        } else {
            EXPECT_NE(outcome.failure.find(failure), std::string::npos)
                << name << ": " << outcome.failure;
        }
        std::filesystem::remove(folder / "own" / "translation" / "catalogue.json");
    }
}

TEST_F(TranslationDownloadTest, WrongFileIsRefusedAndNamed) {
    const auto paths = publish("fr", "no model", "no vocabulary");
    server.on(paths[1], packed("another vocabulary of the same kind"));
    const std::string failure = ensureInstalled("fr-FR");
    EXPECT_NE(failure.find("vocab.enfr.spm"), std::string::npos) << failure;
    EXPECT_EQ(status("en-US", "fr-FR"), "supported");
    EXPECT_EQ(run(session("fr-FR")->prepareTranslation()).kind, TranslationError::notInstalled);
    server.on(paths[1], packed("no vocabulary"));
    EXPECT_EQ(ensureInstalled("fr-FR"), "");
}

TEST_F(TranslationDownloadTest, FetchedCatalogueReplacesTheBuiltInAndIsKept) {
    publish("fr", "no model", "no vocabulary");
    EXPECT_EQ(status("en-US", "de-DE"), "supported");
    server.on(records_, catalogueOf({record("en", "fr", "model", "no model"),
                                     record("en", "fr", "vocab", "no vocabulary"),
                                     record("en", "th", "model"), record("en", "th", "vocab")}));
    EXPECT_EQ(ensureInstalled("fr-FR"), "");
    EXPECT_EQ(status("en-US", "de-DE"), "unsupported");
    EXPECT_EQ(status("en-US", "th-TH"), "supported");
    TranslationModelInventory later(host, store, installer, TranslationCatalogueSource::ofEngine(),
                                    acceptAnything);
    EXPECT_EQ(later.status("en-US", "th-TH"), TranslationAvailabilityStatus::supported);

    // Without the list's server, the stored list is used.
    later.remove("fr");
    server.on(records_, [](const Request&) { return Reply::failure(404); });
    EXPECT_EQ(run(later.ensureInstalled("en-US", "fr-FR", Executor::main(host))).failure, "");
    writeContents(folder / "own" / "translation" / "catalogue.json", "{");
    TranslationModelInventory damaged(host, store, installer);
    EXPECT_EQ(damaged.status("en-US", "de-DE"), TranslationAvailabilityStatus::supported);
}

TEST_F(TranslationDownloadTest, LanguagesAreListedDownloadedAndRemoved) {
    const auto paths = publish("fr", "no model", "no vocabulary");
    EXPECT_EQ(inventory.list().size(), 19u);
    EXPECT_EQ(state("fr").status, TranslationAvailabilityStatus::supported);
    EXPECT_EQ(state("fr").bytes, 0u) << "unknown before a catalogue was fetched";
    EXPECT_EQ(state("th").status, TranslationAvailabilityStatus::unsupported);

    std::string installed;
    inventory.setInstalledHandler([&](const std::string& id) { installed += id + " "; });
    TranslationDownloadProgress last;
    const auto note = [&](TranslationDownloadProgress now) { last = now; };
    EXPECT_EQ(run(inventory.download("fr", note, {})).failure, "");
    EXPECT_EQ(last.received, last.expected);
    EXPECT_EQ(last.expected, packed("no model").size() + packed("no vocabulary").size());
    EXPECT_TRUE(state("fr").isRemovable);
    EXPECT_EQ(state("fr").bytes, std::string("no modelno vocabulary").size());

    writeContents(store.find(ModelKind::translation, "en-fr").value().path("vocab.enfr.spm"), "");
    EXPECT_NE(state("fr").damage.find("vocab.enfr.spm"), std::string::npos);
    EXPECT_EQ(state("fr").status, TranslationAvailabilityStatus::supported);
    EXPECT_EQ(run(inventory.download("fr", {}, {})).failure, "") << "a damaged model is replaced";
    EXPECT_EQ(state("fr").damage, "");

    const auto vocabulary =
        store.find(ModelKind::translation, "en-fr").value().path("vocab.enfr.spm");
    writeContents(vocabulary, "NO vocabulary");
    EXPECT_NE(run(inventory.flaw("fr")).text.find("vocab.enfr.spm"), std::string::npos);
    EXPECT_EQ(run(inventory.download("fr", {}, {})).failure, "");
    EXPECT_EQ(contentsOf(vocabulary), "no vocabulary")
        << "a model is replaced even if only its checksum is wrong";
    EXPECT_EQ(run(inventory.flaw("fr")).text, "");

    inventory.remove("fr");
    EXPECT_EQ(state("fr").status, TranslationAvailabilityStatus::supported);
    EXPECT_EQ(state("fr").bytes, last.expected) << "the size of a download";
    for (const char* unknown : {"en", "th", "xx", "", "../fr"}) {
        EXPECT_NE(run(inventory.download(unknown, {}, {})).failure, "") << unknown;
        EXPECT_THROW(inventory.remove(unknown), std::runtime_error) << unknown;
    }

    std::stop_source stop;
    server.on(paths[0], [&](const Request&) {
        stop.request_stop();
        return Reply::cut("packed", 1).stalling();
    });
    EXPECT_EQ(run(inventory.download("fr", {}, stop.get_token())).failure,
              DownloadStopped().what());
    EXPECT_EQ(installed, "fr fr fr ") << "the stopped download is not among them";
}
