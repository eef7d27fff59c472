#include "Tessarune/speech/SpeechAnalyzerAssetStore.h"
#include "Tessarune/speech/SpeechAnalyzerPreheater.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/simulation/ScriptedAssetInventory.h"
#include "tests/support/RuntimeLog.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using Kind = SpeechAnalyzerAssetStatus::Kind;

struct SpeechAnalyzerAssetStoreTests : ::testing::Test {
    void recordStatuses() {
        store->statuses.onDidChange([this](const auto& all) { seen.push_back(all.at("en-US")); });
    }

    SimulatedHost host{1000};
    testing::RuntimeLog log{host};
    simulation::ScriptedAssetInventory inventory{host};
    std::unique_ptr<SpeechAnalyzerAssetStore> store =
        std::make_unique<SpeechAnalyzerAssetStore>(host, inventory, log.logger);
    std::vector<SpeechAnalyzerAssetStatus> seen;
};

TEST_F(SpeechAnalyzerAssetStoreTests, StatusesAndEventsFollowTheInstallation) {
    const SpeechAnalyzerAssetStatus checking{Kind::checking, ""}, installed{Kind::installed, ""},
        downloading{Kind::downloading, ""}, failed{Kind::failed, "the server is gone"},
        unsupported{Kind::unsupported, ""};
    using All = std::vector<SpeechAnalyzerAssetStatus>;
    using Events = std::vector<std::string>;
    const struct {
        const char* name;
        bool supported, installed;
        std::string failure;
        All statuses;
        Events events;
    } cases[] = {
        {"already installed", true, true, "", All{checking, installed}, Events{"ready"}},
        {"downloaded", true, false, "", All{checking, downloading, installed},
         Events{"install.start", "install.done"}},
        {"the download fails", true, false, "the server is gone",
         All{checking, downloading, failed}, Events{"install.start", "install.failed"}},
        {"there is no such model", false, false, "", All{checking, unsupported},
         Events{"install.failed"}},
    };
    recordStatuses();
    std::size_t written = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        inventory.supported = c.supported;
        inventory.installed = c.installed;
        inventory.failure = c.failure;
        seen.clear();
        store->prepare("en-US");
        host.runUntilIdle();
        EXPECT_EQ(seen, c.statuses);
        const auto events = log.events("speechAnalyzer.assets.");
        EXPECT_EQ(std::vector(events.begin() + static_cast<std::ptrdiff_t>(written), events.end()),
                  c.events);
        EXPECT_EQ(log.lines("speechAnalyzer.assets.").back()["reason"], "settings");
        written = events.size();
    }
}

TEST_F(SpeechAnalyzerAssetStoreTests, ANewAttemptReplacesThePreviousOne) {
    inventory.installed = false;
    recordStatuses();
    store->prepare("en-US");
    host.advanceBy(0.25);
    store->preheat("en-US"); // already in progress
    store->prepare("en-US");
    host.runUntilIdle();
    EXPECT_EQ(inventory.downloads, 2);
    EXPECT_EQ(inventory.stopped, 1);
    EXPECT_EQ(seen.size(), 5u) << "the replaced attempt does not publish its end";
    EXPECT_EQ(seen.back().kind, Kind::installed);
}

TEST_F(SpeechAnalyzerAssetStoreTests, DestroyingTheStoreStopsItsDownload) {
    inventory.installed = false;
    store->prepare("en-US");
    host.advanceBy(0.25);
    store.reset();
    host.runUntilIdle();
    EXPECT_EQ(inventory.stopped, 1);
}

TEST_F(SpeechAnalyzerAssetStoreTests, ThePreheaterTriesOncePerLocale) {
    std::string selected = "apple-analyzer-en-gb";
    SpeechAnalyzerPreheater preheater(*store, [&] { return selected; });
    inventory.installed = false;
    inventory.failure = "no network";
    const auto preheat = [&] {
        preheater.preheatSelectedOptionIfNeeded();
        host.runUntilIdle();
        return inventory.downloads;
    };
    EXPECT_EQ(preheat(), 1);
    EXPECT_EQ(preheat(), 1) << "the preheater does not retry a failed download";
    selected = "an option of another version";
    EXPECT_EQ(preheat(), 2);
    EXPECT_TRUE(store->statuses->contains("en-US"));
    store->preheat("en-US");
    host.runUntilIdle();
    EXPECT_EQ(inventory.downloads, 3);
}

} // namespace
} // namespace tessarune
