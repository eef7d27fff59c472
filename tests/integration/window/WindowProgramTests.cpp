#include "tests/support/FileContents.h"
#include "tests/support/ProgramRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <thread>

namespace tessarune::testing {
namespace {

namespace fs = std::filesystem;

/// False if it does not come to hold within so long.
bool within(double seconds, const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

/// The whole program on a desktop of its own: a display, a window manager and a session bus.
class WindowProgram : public ::testing::Test {
  protected:
    WindowProgram() {
        display_.emplace("/usr/bin/Xvfb",
                         std::vector<std::string>{"-displayfd", "1", "-screen", "0", "1280x800x24"},
                         folder_.path(), environment_);
        environment_.push_back("DISPLAY=:" + firstLine(*display_));
        manager_.emplace("/usr/bin/openbox", std::vector<std::string>(), folder_.path(),
                         environment_);
        bus_.emplace("/usr/bin/dbus-daemon",
                     std::vector<std::string>{"--session", "--nofork", "--print-address=1"},
                     folder_.path(), environment_);
        environment_.push_back("DBUS_SESSION_BUS_ADDRESS=" + firstLine(*bus_));
    }

    std::string firstLine(const StartedProgram& program) {
        EXPECT_TRUE(within(10, [&] { return program.output().find('\n') != std::string::npos; }));
        return program.output().substr(0, program.output().find('\n'));
    }
    StartedProgram start(std::vector<std::string> arguments) {
        return {TESSARUNE_BIN "/tessarune", arguments, folder_.path(), environment_};
    }
    /// What the program has logged under this name.
    std::size_t count(const std::string& event) const {
        std::size_t found = 0;
        if (!fs::exists(data_ / "Logs"))
            return 0;
        for (const auto& log : fs::directory_iterator(data_ / "Logs")) {
            const std::string text = contentsOf(log.path());
            const std::string wanted = "\"event\":\"" + event + "\"";
            for (auto at = text.find(wanted); at != std::string::npos;
                 at = text.find(wanted, at + 1))
                ++found;
        }
        return found;
    }
    /// A committed row is in the journal of the running session.
    bool hasRow() const {
        if (!fs::exists(data_ / "Transcripts"))
            return false;
        for (const auto& file : fs::directory_iterator(data_ / "Transcripts")) {
            if (contentsOf(file.path()).find("best of times") != std::string::npos)
                return true;
        }
        return false;
    }
    /// Every recording has its sound and its text, and nothing is left of a journal.
    void expectSaved(std::size_t recordings) const {
        const auto index = nlohmann::json::parse(contentsOf(data_ / "recordings.json"));
        EXPECT_EQ(index.size(), recordings);
        for (const auto& recording : index) {
            EXPECT_TRUE(fs::exists(recording.at("filePath").get<std::string>()));
            const auto id = recording.at("id").get<std::string>();
            EXPECT_NE(contentsOf(data_ / "Transcripts" / (id + ".txt")).find("best of times"),
                      std::string::npos);
        }
        EXPECT_FALSE(hasJournal());
    }
    /// The next start would find an interrupted session.
    bool hasJournal() const {
        return std::ranges::any_of(fs::directory_iterator(data_ / "Transcripts"),
                                   [](const fs::directory_entry& file) {
                                       return file.path().string().ends_with(".live.ndjson");
                                   });
    }
    static void expectEndedWell(const ProgramRun& ended) {
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.error, "");
    }

    const std::string speech_ = "file:" TESSARUNE_SAMPLE_SPEECH "/two_cities.wav";
    const TemporaryFolder folder_;
    const fs::path data_ = folder_ / "data/Tessarune";
    std::vector<std::string> environment_ = {"XDG_DATA_HOME=" + (folder_ / "data").string(),
                                             "XDG_CONFIG_HOME=" + (folder_ / "config").string(),
                                             "XDG_CACHE_HOME=" + (folder_ / "cache").string(),
                                             "XDG_RUNTIME_DIR=" + folder_.path().string(),
                                             "LC_ALL=C.UTF-8",
                                             "QT_QUICK_BACKEND=software",
                                             "QT_QPA_PLATFORM=xcb",
                                             "WAYLAND_DISPLAY="};
    std::optional<StartedProgram> display_;
    std::optional<StartedProgram> manager_;
    std::optional<StartedProgram> bus_;
};

TEST_F(WindowProgram, ASecondLaunchPassesOnWhatItIsAskedAndTheFirstSavesEverything) {
    StartedProgram first = start({speech_});
    ASSERT_TRUE(within(30, [&] { return hasRow(); }));
    expectEndedWell(start({"stop"}).wait());
    ASSERT_TRUE(within(20, [&] { return count("listen.stop.finalize.done") == 1; }));
    expectSaved(1);
    expectEndedWell(start({"toggle", "show"}).wait());
    ASSERT_TRUE(within(20, [&] { return count("listen.start.task") == 2; }));
    first.send(SIGTERM); // while it starts
    expectEndedWell(first.wait());
    EXPECT_FALSE(hasJournal());
    EXPECT_EQ(start({"nonsense"}).wait().status, 64);
}

TEST_F(WindowProgram, SavesWhatWasSaidWhenItIsAskedToEnd) {
    StartedProgram program = start({speech_});
    ASSERT_TRUE(within(30, [&] { return hasRow(); }));
    program.send(SIGTERM);
    expectEndedWell(program.wait());
    expectSaved(1);
}

TEST_F(WindowProgram, ADisplayThatGoesAwayCostsNothingThatWasSaid) {
    StartedProgram program = start({speech_});
    ASSERT_TRUE(within(30, [&] { return hasRow(); }));
    display_->send(SIGKILL);
    program.wait();
    expectSaved(1);
}

} // namespace
} // namespace tessarune::testing
