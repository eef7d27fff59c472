#include "Tessarune/vocabulary/HistoryPronunciationAudioPlayer.h"
#include "Tessarune/vocabulary/VocabularyAddresses.h"
#include "Tessarune/vocabulary/VocabularyStore.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/simulation/FaultyFileSystem.h"

#include <gtest/gtest.h>

#include <map>

namespace tessarune::testing {

namespace {

using Words = VocabularyStore::Words;
using Source = VocabularyPronunciationSource;
using Provider = VocabularyDictionaryProvider;
using Key = std::optional<std::string>;

const TessarunePaths vocabularyPaths{"/data"};
const char* const vocabularyFile = "/data/Vocabulary.json";

} // namespace

TEST(VocabularyTests, ListsAreSavedAtOnceNewestFirst) {
    simulation::FaultyFileSystem disk;
    disk.setContents("/data/HistoryWordFavorites.json", R"({"words": [" Old ", "old", "elder"]})");
    {
        VocabularyStore store(disk, vocabularyPaths);
        EXPECT_EQ(*store.favoriteWords(), (Words{"old", "elder"}));
        EXPECT_TRUE(disk.exists(vocabularyFile)); // migrated at once
        store.addFavorite("  New ");
        store.addFavorite("old"); // already present
        store.markMastered("BE");
        store.markMastered(" ");
        store.removeFavorite("ELDER");
    }
    VocabularyStore store(disk, vocabularyPaths);
    EXPECT_EQ(*store.favoriteWords(), (Words{"new", "old"}));
    EXPECT_EQ(*store.masteredWords(), (Words{"be"}));
    EXPECT_TRUE(store.isMastered(" Be"));
    EXPECT_FALSE(store.isFavorite("be"));
    EXPECT_EQ(store.coreWords()->size(), 3000U);
    EXPECT_EQ(store.masteredCoreWords(), 1U);
}

TEST(VocabularyTests, ADamagedFileIsKeptAsideAndAFailedSaveLosesNothingInMemory) {
    for (const std::string damaged :
         {"", "[]", "{\"masteredWords\": 3}", "{\"favoriteWords\": [\"a\"", "\xFF\xFE"}) {
        simulation::FaultyFileSystem disk;
        disk.setContents(vocabularyFile, damaged);
        VocabularyStore store(disk, vocabularyPaths);
        EXPECT_TRUE(store.favoriteWords()->empty());
        EXPECT_NE(store.readingProblem(), "");
        EXPECT_EQ(disk.contentsOf(vocabularyFile), damaged);
        disk.setContents("/data/Vocabulary.json.unreadable", "earlier");
        disk.refused = "Vocabulary.json.next";
        store.addFavorite("lost");
        EXPECT_EQ(disk.contentsOf(vocabularyFile), damaged);
        disk.recover();
        store.removeFavorite("lost");
        store.addFavorite("word");
        EXPECT_EQ(disk.contentsOf("/data/Vocabulary.json.unreadable"), "earlier");
        EXPECT_EQ(disk.contentsOf("/data/Vocabulary.json.unreadable-2"), damaged);
        EXPECT_FALSE(disk.exists("/data/Vocabulary.json.unreadable-3")) << "kept aside only once";
        EXPECT_EQ(*VocabularyStore(disk, vocabularyPaths).favoriteWords(), Words{"word"});
    }
    simulation::FaultyFileSystem disk;
    {
        // Another program changes the file, and then damages it.
        VocabularyStore store(disk, vocabularyPaths);
        store.markMastered("a");
        VocabularyStore(disk, vocabularyPaths).markMastered("b");
        store.addFavorite("c");
        EXPECT_EQ(*VocabularyStore(disk, vocabularyPaths).masteredWords(), (Words{"b", "a"}));
        disk.setContents(vocabularyFile, "{");
        store.removeMastered("a");
        EXPECT_EQ(disk.contentsOf("/data/Vocabulary.json.unreadable"), "{");
        EXPECT_EQ(*VocabularyStore(disk, vocabularyPaths).masteredWords(), Words{"b"});
    }
    disk.setContents(vocabularyFile, R"({"favoriteWords": ["kept"]})");
    EXPECT_EQ(*VocabularyStore(disk, vocabularyPaths).favoriteWords(), Words{"kept"});
    std::string logged;
    TessaruneLog::setSink([&](auto, auto, const std::string& text) { logged = text; });
    VocabularyStore store(disk, vocabularyPaths);
    disk.refused = "/data";
    store.addFavorite("word");
    TessaruneLog::setSink({});
    EXPECT_TRUE(store.isFavorite("word"));
    EXPECT_TRUE(logged.starts_with("Vocabulary save failed: ")) << logged;
    EXPECT_FALSE(store.problem()->empty());
    disk.recover();
    store.addFavorite("another");
    EXPECT_EQ(*store.problem(), "");
}

TEST(VocabularyTests, FindsAddressesOfDictionaryPagesAndSounds) {
    EXPECT_FALSE(VocabularyDictionary::url(Provider::collins, " \n"));
    EXPECT_EQ(VocabularyDictionary::url(Provider::youdaoEnglishChinese, " ice cream "),
              "https://dict.youdao.com/result?word=ice%20cream&lang=en");
    EXPECT_EQ(VocabularyDictionary::url(Provider::longman, "../a?b#c&d='"),
              "https://www.ldoceonline.com/dictionary/..%2Fa%3Fb%23c%26d%3D%27");
    namespace Sounds = VocabularyPronunciationAudioSource;
    using URLs = std::vector<std::string>;
    EXPECT_EQ(Sounds::directURLs(Source::youdaoUK, "Word"),
              URLs{"https://dict.youdao.com/dictvoice?audio=word&type=1"});
    EXPECT_EQ(Sounds::directURLs(Source::cambridgeUS, "cat"),
              URLs{"https://dictionary.cambridge.org/media/english/us_pron/c/cat/cat__/cat.mp3"});
    EXPECT_EQ(Sounds::directURLs(Source::oxfordUK, "hello"),
              URLs{"https://www.oxfordlearnersdictionaries.com/media/english/uk_pron/h/hel/hello/"
                   "hello__gb_1.mp3"});
    EXPECT_TRUE(Sounds::directURLs(Source::collinsUS, "").empty());

    const std::string page = "https://dictionary.cambridge.org/dictionary/english/word";
    const std::vector<std::pair<std::string, Key>> pages{
        {R"(<source src="/media/english/us_pron/w.mp3"><source src="/media/english/uk_pron/w.mp3?a&amp;b">)",
         "https://dictionary.cambridge.org/media/english/uk_pron/w.mp3?a&b"},
        {R"(<a src="//cdn.example/media/english/uk_pron/w.mp3">)",
         "https://cdn.example/media/english/uk_pron/w.mp3"},
        {R"(<a src="https://cdn.example/media/english/uk_pron/w.mp3">)",
         "https://cdn.example/media/english/uk_pron/w.mp3"},
        {R"(<a src="/media/english/us_pron/w.mp3">)", std::nullopt},
        {R"(<a src="/media/english/uk_pron/w.mp3)", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [html, expected] : pages)
        EXPECT_EQ(Sounds::firstAudioURL(html, page, "uk_pron"), expected) << html;
}

TEST(VocabularyTests, AWordIsFetchedOnlyOnRequestAndPlayedOnce) {
    SimulatedHost host(1000);
    std::map<std::string, WebAnswer> web{
        {"https://dict.youdao.com/dictvoice?audio=one&type=2", {"audio/mpeg", "ONE"}},
        {"https://dict.youdao.com/dictvoice?audio=page&type=2", {"text/html", "<html>"}},
        {"https://dict.youdao.com/dictvoice?audio=bad&type=2", {"audio/mpeg", "BAD"}},
        {"https://dictionary.cambridge.org/dictionary/english/two",
         {"text/html", R"(src="/media/english/us_pron/x/two.mp3")"}},
        {"https://dictionary.cambridge.org/media/english/us_pron/x/two.mp3", {"audio/mp3", "TWO"}},
    };
    std::vector<std::string> asked;
    std::vector<std::string> heard;
    std::vector<Block> ends;
    HistoryPronunciationAudioPlayer player(
        host,
        [&](const std::string& url, const std::string& userAgent, const std::stop_token&) {
            EXPECT_EQ(userAgent, "Mozilla/5.0 Tessarune");
            asked.push_back(url);
            if (url.find("broken") != std::string::npos)
                throw std::runtime_error("no network library");
            const auto found = web.find(url);
            return found == web.end() ? std::nullopt : std::optional(found->second);
        },
        [&](const std::string& bytes, Block onEnd) {
            if (bytes == "BAD")
                throw std::runtime_error("no sound server");
            heard.push_back(bytes);
            ends.push_back(std::move(onEnd));
            return Block([&heard] { heard.emplace_back("stop"); });
        });
    host.runUntilIdle();
    EXPECT_TRUE(asked.empty());

    player.play(Source::youdaoUS, "one");
    EXPECT_EQ(*player.loadingKey(), "youdaoUS|one");
    player.play(Source::cambridgeUS, "two"); // replaces the request for "one"
    host.runUntilIdle();
    EXPECT_EQ(heard, std::vector<std::string>{"TWO"});
    EXPECT_EQ(*player.loadingKey(), Key());
    EXPECT_EQ(*player.activeKey(), "cambridgeUS|two");

    player.play(Source::youdaoUS, "page"); // not a sound: playback continues
    host.runUntilIdle();
    EXPECT_EQ(*player.activeKey(), "cambridgeUS|two");
    EXPECT_EQ(*player.loadingKey(), Key());
    ends[0]();
    EXPECT_EQ(*player.activeKey(), Key());

    player.play(Source::youdaoUS, "one");
    host.runUntilIdle();
    player.play(Source::youdaoUS, "one"); // a second time: stops
    EXPECT_EQ(*player.activeKey(), Key());
    EXPECT_EQ(heard, (std::vector<std::string>{"TWO", "ONE", "stop"}));
    for (const char* word : {"broken", "bad"}) {
        player.play(Source::youdaoUS, word);
        host.runUntilIdle();
        EXPECT_TRUE(!*player.loadingKey() && !*player.activeKey()) << word;
    }
}

} // namespace tessarune::testing
