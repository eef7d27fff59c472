#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/host/LoopHost.h"
#include "Tessarune/platform/speech-engine/SpeechModelInventory.h"
#include "tests/platform/model-store/FaultyServer.h"
#include "tests/platform/speech-engine/ScriptedEngine.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace tessarune;
using namespace tessarune::testing;

namespace {

class SpeechModelInventoryTest : public ::testing::Test {
  protected:
    SpeechModelInventoryTest()
        : store_(disk_, folder_ / "own", {folder_ / "shipped"}),
          installer_(host_, store_, policy()),
          inventory_(
              store_, installer_, [this] { return choice_; },
              [this] { return engine_.library(); }) {
        // "123456789" has a published CRC-32C.
        engine_.dependencies =
            R"({"groups":[{"files":[{"name":"a.ort","url":"https://models.example/x/a.ort",)"
            R"("size":9,"checksum":"4waSgw==","checksum_type":"crc32c"}]}]})";
        server_.on("/models.example/x/a.ort", "123456789");
    }

    DownloadPolicy policy() const {
        DownloadPolicy policy;
        policy.mirror = server_.url("");
        return policy;
    }

    /// Fetches a missing model. Returns "nothing missing", "installed" or the failure.
    std::string fetch(std::string locale) {
        std::string outcome;
        spawn(Executor::main(host_), ask(this, std::move(locale), &outcome));
        host_.run();
        return outcome;
    }

    static Task<void> ask(SpeechModelInventoryTest* self, std::string locale,
                          std::string* outcome) {
        try {
            Task<std::shared_ptr<AssetInstallationRequest>> asking =
                self->inventory_.assetInstallationRequest(std::move(locale));
            const std::shared_ptr<AssetInstallationRequest> request = co_await asking;
            *outcome = "nothing missing";
            if (request) {
                Task<void> installing = request->downloadAndInstall(
                    [self](AssetProgress now) { self->progress_ = now; }, {});
                co_await installing;
                *outcome = "installed";
            }
        } catch (const std::exception& failure) {
            *outcome = failure.what();
        }
        self->host_.quit();
    }

    const SpeechModelState& state(std::string_view name) {
        states_ = inventory_.list();
        return *std::find_if(states_.begin(), states_.end(),
                             [&](const SpeechModelState& one) { return one.name == name; });
    }

    TemporaryFolder folder_;
    PosixFileSystem disk_;
    ModelStore store_;
    LoopHost host_;
    FaultyServer server_;
    WorkingHost simulated_;
    ScriptedEngine engine_{simulated_};
    std::string choice_ = "automatic";
    ModelInstaller installer_;
    SpeechModelInventory inventory_;
    AssetProgress progress_;
    std::vector<SpeechModelState> states_;
};

} // namespace

TEST_F(SpeechModelInventoryTest, MissingOrDamagedModelIsFetched) {
    EXPECT_FALSE(state("tiny-en").isInstalled);
    EXPECT_EQ(fetch("en-US"), "installed");
    EXPECT_EQ(progress_.received, 9u);
    EXPECT_EQ(progress_.expected, 9u);
    EXPECT_EQ(store_.find(ModelKind::speech, "tiny-en").value().details.at("architecture"), "0");
    for (const char* locale : {"en-US", "en_GB", "en"})
        EXPECT_EQ(fetch(locale), "nothing missing");

    choice_ = "small-streaming-en";
    EXPECT_EQ(fetch("en-ZA"), "installed");
    choice_ = "automatic";
    std::ofstream(store_.find(ModelKind::speech, "tiny-en").value().path("a.ort")) << "cut";
    EXPECT_FALSE(state("tiny-en").damage.empty());
    EXPECT_EQ(fetch("en-US"), "nothing missing") << "any intact model will do";
    choice_ = "tiny-en";
    EXPECT_EQ(fetch("en-US"), "installed") << "a damaged one is fetched again";
    EXPECT_TRUE(state("tiny-en").isInstalled && state("tiny-en").damage.empty());

    inventory_.remove("small-streaming-en");
    EXPECT_FALSE(state("small-streaming-en").isInstalled);
    EXPECT_EQ(inventory_.list().size(), SpeechModels::offered().size());
}

TEST_F(SpeechModelInventoryTest, UnknownLocalesAndModelsAndInvalidListsAreReported) {
    EXPECT_EQ(fetch("fr-FR"), "There is no speech model for fr-FR.");
    EXPECT_EQ(fetch("enm"), "There is no speech model for enm.");
    choice_ = "huge-en";
    EXPECT_EQ(fetch("en-US"), "There is no speech model named huge-en.");
    EXPECT_THROW(inventory_.remove("huge-en"), std::runtime_error);
    EXPECT_THROW(inventory_.remove("../.."), std::exception);

    choice_ = "tiny-en";
    for (
        const char* list :
        {"", "null", "[]", R"({"groups":[{}]})", R"({"groups":[{"files":[{"name":"a.ort"}]}]})",
         R"({"groups":[{"files":[{"name":"a.ort","url":"u","size":"9","checksum":"","checksum_type":""}]}]})",
         R"({"groups":[{"files":[{"name":"a.ort","url":"u","size":9,"checksum":"x","checksum_type":"crc32c"}]}]})"}) {
        engine_.dependencies = list;
        EXPECT_NE(fetch("en-US").find("list of the files of tiny-en is invalid"), std::string::npos)
            << list;
    }
    engine_.dependencies = R"({"groups":[]})";
    EXPECT_NE(fetch("en-US").find("is invalid"), std::string::npos);
    engine_.failing = "list";
    EXPECT_NE(fetch("en-US").find("out of order"), std::string::npos);
    EXPECT_TRUE(server_.requests().empty());
}
