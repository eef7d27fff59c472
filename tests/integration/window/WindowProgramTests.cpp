#include "tests/support/FileContents.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>

namespace tessarune::testing {
namespace {

namespace fs = std::filesystem;

/// The whole program with a window that nobody sees, asked to end in the middle of a sentence.
TEST(WindowProgram, SavesWhatWasSaidWhenItIsAskedToEnd) {
    const TemporaryFolder folder;
    const ProgramRun ended =
        run("/usr/bin/timeout",
            {"--preserve-status", "-s", "TERM", "15", TESSARUNE_BIN "/tessarune",
             "file:" TESSARUNE_SAMPLE_SPEECH "/two_cities.wav"},
            folder.path(),
            {"XDG_DATA_HOME=" + (folder / "data").string(),
             "XDG_CONFIG_HOME=" + (folder / "config").string(),
             "XDG_CACHE_HOME=" + (folder / "cache").string(),
             "XDG_RUNTIME_DIR=" + folder.path().string(), "LC_ALL=C", "QT_QPA_PLATFORM=offscreen",
             "QT_QUICK_BACKEND=software"});
    EXPECT_EQ(ended.status, 0) << ended.error;
    EXPECT_EQ(ended.error.find(".qml"), std::string::npos) << ended.error;
    const fs::path data = folder / "data/Tessarune";
    const auto recordings = nlohmann::json::parse(contentsOf(data / "recordings.json"));
    ASSERT_EQ(recordings.size(), 1U);
    const auto id = recordings[0].at("id").get<std::string>();
    EXPECT_NE(contentsOf(data / "Transcripts" / (id + ".txt")).find("best of times"),
              std::string::npos);
    EXPECT_TRUE(fs::exists(recordings[0].at("filePath").get<std::string>()));
}

} // namespace
} // namespace tessarune::testing
