#include "Tessarune/platform/translation-engine/TranslationCatalogue.h"
#include "tests/platform/translation-engine/PublishedModels.h"

#include <gtest/gtest.h>

using namespace tessarune;
using namespace tessarune::testing;

namespace {

using Json = nlohmann::json;

const TranslationCatalogueSource source{"https://list.example/records", "https://files.example", 3};

std::vector<Json> edition(const std::string& version, const std::string& condition = "",
                          const std::string& architecture = "base") {
    std::vector<Json> records;
    for (const char* role : {"model", "vocab", "lex"}) {
        Json made = record("en", "fr", role, version + condition + architecture + role, version);
        made["filter_expression"] = condition;
        made["architecture"] = architecture;
        records.push_back(made);
    }
    return records;
}

std::vector<Json> joined(std::initializer_list<std::vector<Json>> editions) {
    std::vector<Json> all;
    for (const auto& records : editions)
        all.insert(all.end(), records.begin(), records.end());
    return all;
}

} // namespace

TEST(TranslationCatalogueTest, TakesTheBestEditionAsAWhole) {
    const std::string nightly = "env.channel == 'default' || env.channel == 'nightly'";
    const std::string android = "env.appinfo.OS == 'Android'";
    const std::string desktop = "env.appinfo.OS != 'Android'";
    std::vector<Json> halfNewer = edition("3.2");
    halfNewer.erase(halfNewer.begin() + 1);
    std::vector<Json> unchecked = edition("3.3");
    unchecked[0].erase("decompressedHash");
    struct Case {
        std::vector<Json> records;
        std::string expected; ///< the content of each file, without the role at its end
    };
    for (const auto& [records, expected] :
         {Case{edition("3.0"), "3.0base"},
          Case{joined({edition("3.9"), edition("3.10")}), "3.10base"},
          Case{joined({edition("3.1"), halfNewer, unchecked, edition("4.0"), edition("2.9")}),
               "3.1base"},
          Case{joined({edition("3.0"), edition("3.0a1")}), "3.0base"},
          Case{joined({edition("3.0"), edition("3.1a1", nightly)}), "3.0base"},
          Case{edition("3.0a1", nightly), "3.0a1" + nightly + "base"},
          Case{joined({edition("3.0", desktop, "base"), edition("3.0", android, "tiny")}),
               "3.0" + desktop + "base"},
          Case{joined({edition("3.0", "", "tiny"), edition("3.0", desktop)}),
               "3.0" + desktop + "base"}}) {
        for (const bool isReversed : {false, true}) {
            std::vector<Json> order = records;
            if (isReversed)
                std::reverse(order.begin(), order.end());
            const auto model =
                TranslationCatalogue::parse(catalogueOf(order), source).model({"en", "fr"});
            ASSERT_TRUE(model) << expected;
            ASSERT_EQ(model->files.size(), 2u) << "the shortlist is not needed";
            EXPECT_EQ(model->files[0].sha256, sha256Of(expected + "model"));
            EXPECT_EQ(model->files[1].sha256, sha256Of(expected + "vocab"));
        }
    }
}

TEST(TranslationCatalogueTest, KnowsHowAFileIsFetchedAndChecked) {
    std::vector<Json> records{record("en", "ja", "model", "network"),
                              record("en", "ja", "srcvocab", "in"),
                              record("en", "ja", "trgvocab", "out")};
    records[2]["name"] = "target.spm";
    const auto model =
        TranslationCatalogue::parse(catalogueOf(records), source).model({"en", "ja"});
    ASSERT_TRUE(model);
    EXPECT_EQ(model->name, "en-ja");
    EXPECT_EQ(model->details.at("version"), "3.0");
    const FileToFetch& network = model->files.at(0);
    EXPECT_EQ(network.name, "model.enja.bin");
    EXPECT_EQ(network.url, "https://files.example/files/model.enja.bin3.0.zst");
    EXPECT_TRUE(network.isZstd);
    EXPECT_EQ(network.bytes, packed("network").size());
    EXPECT_EQ(network.unpackedBytes, 7u);

    StoredModel stored;
    stored.folder = "/models/en-ja";
    for (const FileToFetch& file : model->files)
        stored.files.push_back({file.name, 1, file.sha256});
    const TranslationEngine::Files files = translationFilesOf(stored);
    EXPECT_EQ(files.model, "/models/en-ja/model.enja.bin");
    EXPECT_EQ(files.sourceVocabulary, "/models/en-ja/srcvocab.enja.spm");
    EXPECT_EQ(files.targetVocabulary, "/models/en-ja/trgvocab.target.spm");
    stored.files.pop_back();
    EXPECT_THROW(translationFilesOf(stored), std::runtime_error);
}

TEST(TranslationCatalogueTest, RefusesInvalidListsAndSkipsInvalidRecords) {
    const std::string good = catalogueOfPairs({{"en", "fr"}});
    for (const std::string& text :
         {std::string(), std::string("null"), std::string("[]"), std::string(R"({"data":{}})"),
          std::string(R"({"data":[]})"), std::string(R"({"data":[1,null,[],{"attachment":1}]})"),
          good.substr(0, good.size() / 2), "<html>" + good, std::string(1'000'000, '['),
          catalogueOf(std::vector{record("en", "fr", "vocab")}), catalogueOf(edition("4.0")),
          catalogueOf(edition("three")), catalogueOf(edition("3."))})
        EXPECT_THROW(TranslationCatalogue::parse(text, source), std::runtime_error)
            << text.substr(0, 100);
    // One invalid record does not affect the others.
    std::vector<Json> records = edition("3.0");
    for (Json strange : edition("3.5")) {
        strange["version"] = 35;
        records.push_back(strange);
        strange["version"] = "3.5";
        strange["attachment"]["location"] = Json::array();
        records.push_back(strange);
    }
    records.push_back(Json{{"deleted", true}});
    EXPECT_TRUE(TranslationCatalogue::parse(catalogueOf(records), source).lists({"en", "fr"}));
}
