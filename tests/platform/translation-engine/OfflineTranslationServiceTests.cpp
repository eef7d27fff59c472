// The real engine with the English to Portuguese model that scripts/setup unpacks.

#include "Tessarune/platform/host/ProcessMemory.h"
#include "Tessarune/platform/translation-engine/TraditionalChinese.h"
#include "TessaruneCore/text/Text.h"
#include "tests/platform/translation-engine/PublishedModels.h"
#include "tests/platform/translation-engine/TranslationFixture.h"

#include <malloc.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <future>
#include <thread>

using namespace tessarune;
using namespace tessarune::testing;

namespace {

class OfflineTranslationTest : public TranslationFixture {
  protected:
    using TranslationFixture::TranslationFixture;

    /// Installs the files of the shipped model as a downloaded model with this name.
    StoredModel own(const std::string& name) {
        const std::filesystem::path partial = store.partialFolder(ModelKind::translation, name);
        const auto shipped = std::filesystem::path(TESSARUNE_MODELS) / "translation" / "en-pt";
        std::filesystem::create_directories(partial);
        for (const char* file : {portugueseModel, portugueseVocabulary})
            std::filesystem::copy_file(shipped / file, partial / file);
        return store.adopt(ModelKind::translation, name, {portugueseModel, portugueseVocabulary},
                           {});
    }
};

/// Tests without the models that came with the program.
class OwnTranslationTest : public OfflineTranslationTest {
  protected:
    OwnTranslationTest() : OfflineTranslationTest(std::vector<std::filesystem::path>()) {}
};

std::size_t countOf(const std::string& word, const std::string& text) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
        ++count;
    return count;
}

/// Megabytes of memory that this process holds.
double residentMegabytes() {
    std::ifstream statm("/proc/self/statm");
    double pages = 0;
    statm >> pages >> pages;
    return pages * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

} // namespace

TEST_F(OfflineTranslationTest, TranslatesSentences) {
    EXPECT_EQ(translate("Hello, world!").text, "Olá, mundo!");
    const std::string first = "The weather is nice today.";
    const std::string second = "We are going to the park.";
    const auto together = translate(first + "  " + second);
    EXPECT_EQ(together.text, translate(first).text + "  " + translate(second).text);
    EXPECT_NE(together.text.find("parque"), std::string::npos) << together.text;
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(OfflineTranslationTest, LosesNothingOfLongText) {
    std::string many;
    for (int i = 0; i < 30; ++i)
        many += "The cat sat on the mat. ";
    EXPECT_EQ(countOf("gato", translate(many).text), 30u);

    std::string one = "We saw";
    for (int i = 0; i < 90; ++i)
        one += " a cat,";
    const std::string translated = translate(one + " and at the very end an elephant.").text;
    EXPECT_NE(translated.find("elefante"), std::string::npos) << translated;
}

TEST_F(OfflineTranslationTest, AcceptsAnyText) {
    for (const char* blank : {"", " ", "\t\r\n", "\u3000\u00a0"})
        EXPECT_EQ(translate(blank).kind, TranslationError::nothingToTranslate);
    std::string marks = "e";
    for (int i = 0; i < 500; ++i)
        marks += "\u0301";
    for (const std::string& odd :
         {std::string("\xff\xfe broken \xe2\x82"), std::string("a\0b\0c", 5),
          std::string("\xed\xa0\x80"), std::string("👩‍👩‍👧‍👦 🇧🇷"),
          std::string("مرحبا بالعالم \u202eabc"), std::string("日本語の文。"), marks,
          std::string("<b>bold</b> %s \\n ${x}"), std::string(600, '.')}) {
        const auto outcome = translate(odd);
        EXPECT_EQ(outcome.failure, "") << odd;
        EXPECT_TRUE(Text::isValidUTF8(outcome.text)) << odd;
    }
}

TEST_F(OfflineTranslationTest, SaysWhatItCanTranslate) {
    struct Case {
        const char* from;
        const char* to;
        const char* expected;
    };
    for (const auto& [from, to, expected] :
         {Case{"en-US", "pt-BR", "installed"}, Case{"en", "pt", "installed"},
          Case{"en_GB", "pt-PT", "installed"}, Case{"en-US", "zh-Hans", "supported"},
          Case{"en-US", "zh-Hant", "supported"}, Case{"en-US", "uk-UA", "supported"},
          Case{"en-US", "th-TH", "unsupported"}, Case{"en-US", "en-US", "unsupported"},
          Case{"pt-BR", "en-US", "unsupported"}, Case{"en-US", "", "unsupported"},
          Case{"en-US", "../../etc", "unsupported"}})
        EXPECT_EQ(status(from, to), expected) << from << " " << to;
    EXPECT_EQ(translate("Hello.", "th-TH").kind, TranslationError::unsupportedLanguagePairing);
    EXPECT_EQ(translate("Hello.", "zh-Hans").kind, TranslationError::notInstalled);
    const auto chinese = session("zh-Hans");
    const auto portuguese = session("pt-BR");
    EXPECT_EQ(run(chinese->isReady()).text, "no");
    EXPECT_EQ(run(portuguese->isReady()).text, "yes");
    EXPECT_TRUE(server.requests().empty()) << "only preparing a pair may use the network";
}

TEST_F(OwnTranslationTest, RefusesModelsThatChangedSinceTheirInstallation) {
    struct Case {
        const char* name;
        std::function<void(const StoredModel&)> damage;
        const char* status;
        TranslationError expected;
        const char* words; ///< in the failure
    };
    const auto change = [](const char* file, auto apply) {
        return [file, apply](const StoredModel& model) {
            std::string bytes = contentsOf(model.path(file));
            apply(bytes);
            writeContents(model.path(file), bytes);
        };
    };
    const auto halve = [](std::string& bytes) { bytes.resize(bytes.size() / 2); };
    const auto flip = [](std::string& bytes) { bytes[bytes.size() / 2] ^= 1; };
    using enum TranslationError;
    for (const auto& [name, damage, expectedStatus, expected, words] :
         {Case{"model cut", change(portugueseModel, halve), "supported", notInstalled, "size"},
          Case{"model bit flipped", change(portugueseModel, flip), "installed", notInstalled,
               portugueseModel},
          Case{"vocabulary bit flipped", change(portugueseVocabulary, flip), "installed",
               notInstalled, portugueseVocabulary},
          Case{"vocabulary gone",
               [](const StoredModel& model) {
                   std::filesystem::remove(model.path(portugueseVocabulary));
               },
               "supported", notInstalled, portugueseVocabulary},
          Case{"record gone",
               [](const StoredModel& model) { std::filesystem::remove(model.path("model.json")); },
               "supported", notInstalled, "not on this computer"}}) {
        const StoredModel model = own("en-pt");
        damage(model);
        EXPECT_EQ(status("en-US", "pt-BR"), expectedStatus) << name;
        const auto outcome = translate("Hello.");
        EXPECT_EQ(outcome.kind, expected) << name;
        EXPECT_NE(outcome.failure.find(words), std::string::npos)
            << name << ": " << outcome.failure;
        std::filesystem::remove_all(model.folder);
    }
}

TEST_F(OwnTranslationTest, FilesThatTheEngineCannotReadAreAnInternalError) {
    const std::filesystem::path partial = store.partialFolder(ModelKind::translation, "en-pt");
    for (const std::string& content :
         {std::string("no model"), std::string(), std::string(100, '\xff'),
          contentsOf(std::filesystem::path(TESSARUNE_MODELS) / "translation/en-pt" /
                     portugueseModel)
              .substr(0, 1'000'000)}) {
        std::filesystem::create_directories(partial);
        writeContents(partial / portugueseModel, content);
        writeContents(partial / portugueseVocabulary, "no vocabulary");
        store.adopt(ModelKind::translation, "en-pt", {portugueseModel, portugueseVocabulary}, {});
        const auto outcome = translate("Hello.");
        EXPECT_EQ(outcome.kind, TranslationError::internalError) << content.size() << " bytes";
        EXPECT_NE(outcome.failure, "");
    }
    own("en-pt");
    EXPECT_EQ(translate("Hello, world!").text, "Olá, mundo!");
}

TEST_F(OwnTranslationTest, NoticesThatAModelIsRemovedAndInstalledAgain) {
    const StoredModel model = own("en-pt");
    const auto portuguese = session("pt-BR");
    EXPECT_EQ(run(portuguese->translate("Hello, world!")).text, "Olá, mundo!");
    store.remove(ModelKind::translation, "en-pt");
    EXPECT_EQ(run(portuguese->translate("Hello, world!")).kind, TranslationError::notInstalled);
    EXPECT_EQ(run(portuguese->isReady()).text, "no");
    own("en-pt");
    EXPECT_EQ(run(portuguese->translate("Hello, world!")).text, "Olá, mundo!");
}

TEST_F(OwnTranslationTest, WritesTraditionalCharactersWhereThereIsNoModelForThem) {
    EXPECT_EQ(TraditionalChinese().of("鼠标和软件里的汉字"), "滑鼠和軟體裡的漢字");
    const TranslationPair simplified{"en", "zh-Hans"};
    own("en-zh-Hans");
    EXPECT_EQ(inventory.pairFor("en-US", "zh-Hans"), simplified);
    EXPECT_EQ(inventory.pairFor("en-US", "zh-Hant"), (TranslationPair{"en", "zh-Hant"}))
        << "a model that is listed is preferred to a conversion";
    writeContents(folder / "own" / "translation" / "catalogue.json",
                  catalogueOfPairs({{"en", "zh"}}));
    TranslationModelInventory other(host, store, installer);
    EXPECT_EQ(other.pairFor("en-US", "zh-Hans"), simplified) << "an installed model comes first";
    EXPECT_EQ(other.pairFor("en-US", "zh-Hant"), (TranslationPair{"en", "zh-Hans", true}));
    service = std::make_unique<OfflineTranslationService>(host, store, other);
    EXPECT_EQ(translate("Hello, world!", "zh-Hant").text, "Olá, mundo!")
        << "the Simplified pair translates, then its text is converted";
}

TEST_F(OfflineTranslationTest, SessionsSideBySideDoNotDisturbEachOther) {
    const std::vector<std::string> texts{"Hello, world!", "The weather is nice today.",
                                         "We are going to the park.", "This is a house."};
    std::vector<std::string> alone;
    for (const std::string& text : texts)
        alone.push_back(translate(text).text);
    const auto one = session("pt-BR");
    const Executor elsewhere =
        Executor::queue(host, host.serialQueue("elsewhere", QueuePriority::standard));
    const auto other = service->session("en", "pt", elsewhere);
    std::vector<std::shared_ptr<Outcome>> outcomes;
    for (const std::string& text : texts) {
        outcomes.push_back(begin(one->translate(text)));
        outcomes.push_back(begin(other->translate(text)));
    }
    finish();
    for (std::size_t i = 0; i < outcomes.size(); ++i)
        EXPECT_EQ(outcomes[i]->text, alone[i / 2]) << outcomes[i]->failure;
}

TEST_F(OfflineTranslationTest, OperationsOfADroppedSessionOrServiceAreCancelled) {
    auto dropped = session("pt-BR");
    const auto kept = session("pt-BR");
    const auto first = begin(dropped->translate("The weather is nice today."));
    const auto second = begin(kept->translate("Hello, world!"));
    dropped.reset();
    finish();
    EXPECT_EQ(first->kind, TranslationError::alreadyCancelled);
    EXPECT_EQ(second->text, "Olá, mundo!");
    service.reset();
    EXPECT_EQ(run(kept->translate("Hello, world!")).kind, TranslationError::alreadyCancelled);
    EXPECT_EQ(run(kept->prepareTranslation()).kind, TranslationError::alreadyCancelled);
}

namespace {

/// A disk that blocks the engines' threads, like an unreachable network disk.
class HangingDisk : public PosixFileSystem {
  public:
    std::uint64_t size(const Path& path) override {
        if (hangs && std::this_thread::get_id() != mainThread_)
            back_.wait();
        return PosixFileSystem::size(path);
    }
    std::atomic<bool> hangs = false; ///< whether later calls hang
    void comeBack() { comingBack_.set_value(); }

  private:
    const std::thread::id mainThread_ = std::this_thread::get_id();
    std::promise<void> comingBack_;
    const std::shared_future<void> back_ = comingBack_.get_future().share();
};

std::ptrdiff_t threads() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

/// Waits until at most `count` threads are left. The engine of a destroyed session ends on its own
/// thread, so that thread may still exist.
void waitForThreads(std::ptrdiff_t count) {
    while (threads() > count)
        std::this_thread::yield();
}

} // namespace

TEST_F(OfflineTranslationTest, AnEngineThatHangsIsGivenUpAndTheNextSessionHasAnother) {
    HangingDisk unsure;
    ModelStore shipped(unsure, folder / "own", {TESSARUNE_MODELS});
    TranslationModelInventory models(host, shipped, installer);
    service = std::make_unique<OfflineTranslationService>(host, shipped, models,
                                                          TranslationLimits{60, 0.2});
    const std::ptrdiff_t before = threads();
    for (int i = 0; i < 3; ++i) {
        unsure.hangs = false;
        const auto portuguese = session("pt-BR");
        ASSERT_EQ(run(portuguese->isReady()).text, "yes") << "it has an engine of its own";
        unsure.hangs = true;
        const auto first = begin(portuguese->translate("Hello, world!"));
        const auto second = begin(portuguese->translate("And this one waits behind it."));
        finish();
        EXPECT_EQ(first->kind, TranslationError::alreadyCancelled);
        EXPECT_EQ(second->kind, TranslationError::alreadyCancelled);
        EXPECT_EQ(run(portuguese->isReady()).text, "no");
    }
    EXPECT_EQ(translate("Hello, world!").failure, "The translation engine does not answer.")
        << "at most three engines hang at a time";
    unsure.comeBack();
    waitForThreads(before);
    EXPECT_EQ(run(session("pt-BR")->isReady()).text, "yes") << "the engines that hung have ended";
}

TEST_F(OfflineTranslationTest, GivesItsMemoryBackWithTheLastSession) {
#ifdef TESSARUNE_SANITIZED
    GTEST_SKIP() << "a sanitizer keeps what was freed";
#endif
    ProcessMemory::returnLargeBlocks(); // as the program does when it starts
    const std::ptrdiff_t threadsWithoutEngine = threads();
    translate("What the first use leaves behind is not the engine's.");
    waitForThreads(threadsWithoutEngine);
    malloc_trim(0); // as the program does at the end of each session
    const double before = residentMegabytes();
    double most = 0;
    for (int i = 0; i < 5; ++i) {
        const auto portuguese = session("pt-BR");
        run(portuguese->translate("The weather is nice today."));
        most = std::max(most, residentMegabytes());
    }
    EXPECT_GT(most, before + 20) << "the loaded pair takes at least 20 MB";
    waitForThreads(threadsWithoutEngine);
    malloc_trim(0);
    EXPECT_LT(residentMegabytes(), before * 1.1);
}
