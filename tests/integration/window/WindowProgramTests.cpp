#include "Tessarune/platform/disk/FileLock.h"
#include "Tessarune/platform/pulse/PrivateSoundServer.h"
#include "tests/support/FileContents.h"
#include "tests/support/ProgramRun.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace tessarune::testing {
namespace {

namespace fs = std::filesystem;

/// Whether the condition becomes true within `seconds`.
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
        // Translates with the installed model, and logs every step.
        fs::create_directories(folder_ / "config/Tessarune");
        std::ofstream(folder_ / "config/Tessarune/settings.json")
            << R"({"translationTargetLanguage": "pt-BR", "diagnosticsLevel": "verbose"})";
        display_.emplace("/usr/bin/Xvfb",
                         std::vector<std::string>{"-displayfd", "1", "-screen", "0", "1280x800x24"},
                         folder_.path(), environment_);
        environment_.push_back("DISPLAY=:" + firstLine(*display_));
        // On a busy computer the manager sometimes ends at its start.
        bool isManaged = false;
        for (int starts = 0; starts < 10 && !isManaged; ++starts) {
            manager_.emplace("/usr/bin/openbox", std::vector<std::string>(), folder_.path(),
                             environment_);
            isManaged = within(2, [&] { return !pointer({"get_desktop"}).empty(); });
        }
        EXPECT_TRUE(isManaged) << "needs openbox and xdotool";
        bus_.emplace("/usr/bin/dbus-daemon",
                     std::vector<std::string>{"--session", "--nofork", "--print-address=1"},
                     folder_.path(), environment_);
        environment_.push_back("DBUS_SESSION_BUS_ADDRESS=" + firstLine(*bus_));
    }
    ~WindowProgram() override {
        if (!accessibility_)
            return;
        accessibility_->send(SIGTERM); // ends its bus, too
        accessibility_->wait();
    }

    std::string firstLine(const StartedProgram& program) {
        EXPECT_TRUE(within(10, [&] { return program.output().find('\n') != std::string::npos; }));
        return program.output().substr(0, program.output().find('\n'));
    }
    StartedProgram start(std::vector<std::string> arguments) {
        return {TESSARUNE_BIN "/tessarune", arguments, folder_.path(), environment_};
    }
    /// Starts the separate bus that assistive programs use.
    void startAccessibility() {
        environment_.emplace_back("QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1");
        accessibility_.emplace("/usr/libexec/at-spi-bus-launcher",
                               std::vector<std::string>{"--launch-immediately"}, folder_.path(),
                               environment_);
    }
    std::string pointer(const std::vector<std::string>& commands) const {
        return run("/usr/bin/xdotool", commands, folder_.path(), environment_).output;
    }
    /// The size and position of the caption window, without the window manager's border.
    struct Place {
        int width = 0;
        int height = 0;
        int x = 0;
        int y = 0;

        bool operator==(const Place&) const = default;
        std::string text() const {
            return std::to_string(width) + "x" + std::to_string(height) + "+" + std::to_string(x) +
                   "+" + std::to_string(y);
        }
    };
    Place place() const {
        Place found;
        std::string id = pointer({"search", "--onlyvisible", "--class", "tessarune"});
        id = id.substr(0, id.find('\n'));
        if (!id.empty()) {
            const std::string shown = pointer({"getwindowgeometry", "--shell", id});
            std::sscanf(shown.c_str(), "WINDOW=%*d X=%d Y=%d WIDTH=%d HEIGHT=%d", &found.x,
                        &found.y, &found.width, &found.height);
        }
        return found;
    }
    /// Drags a point of the window up and to the left until the window has changed. The point is
    /// `distance` pixels to the left of the window's lower right corner and as many above it.
    void drag(int distance, const std::function<bool(const Place&)>& isChanged) {
        EXPECT_TRUE(within(20, [&] {
            const Place now = place();
            const auto at = [&](int by) {
                return std::vector<std::string>{"mousemove",
                                                std::to_string(now.x + now.width - distance - by),
                                                std::to_string(now.y + now.height - distance - by)};
            };
            pointer(at(0));
            pointer({"mousedown", "1"});
            pointer(at(40));
            pointer(at(80));
            const bool hasChanged = within(1, [&] { return isChanged(place()); });
            pointer({"mouseup", "1"});
            return hasChanged;
        })) << place().text();
    }
    StartedProgram screenReader(std::vector<std::string> arguments) {
        return {TESSARUNE_SCREEN_READER, arguments, folder_.path(), environment_};
    }
    /// Waits until the program has logged the event, then presses the button.
    StartedProgram pressAt(const std::string& button, const std::string& event) {
        return screenReader({"press", button, (data_ / "Logs").string(), event});
    }
    /// How many events of this name the program has logged.
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
    /// Whether the journal of the running session has the first row of the speech.
    bool hasRow() const {
        if (!fs::exists(data_ / "Transcripts"))
            return false;
        for (const auto& file : fs::directory_iterator(data_ / "Transcripts")) {
            if (file.path().string().ends_with(".live.ndjson") &&
                contentsOf(file.path()).find("best of times") != std::string::npos)
                return true;
        }
        return false;
    }
    /// Checks the number of recordings, their sound and text, and that no journal remains.
    void expectSaved(std::size_t recordings) const {
        const auto index = nlohmann::json::parse(contentsOf(data_ / "recordings.json"));
        EXPECT_EQ(index.size(), recordings);
        for (const auto& recording : index) {
            EXPECT_TRUE(fs::exists(recording.at("filePath").get<std::string>()));
            const auto id = recording.at("id").get<std::string>();
            const std::string text = contentsOf(data_ / "Transcripts" / (id + ".txt"));
            EXPECT_NE(text.find("best of times"), std::string::npos) << text;
        }
        EXPECT_FALSE(hasJournal());
    }
    /// Whether a journal remains, from which the next start would restore a session.
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
    std::optional<StartedProgram> accessibility_;
};

/// The last state of the windows that a reader printed.
std::string shown(const StartedProgram& reader) {
    const std::string output = reader.output();
    const auto last = output.rfind("--\n");
    return last == std::string::npos ? std::string() : output.substr(last);
}

TEST_F(WindowProgram, ASecondLaunchPassesItsRequestToTheFirstWhichSavesEverything) {
    StartedProgram first = start({speech_});
    ASSERT_TRUE(within(30, [&] { return hasRow(); }));
    expectEndedWell(start({"stop"}).wait());
    ASSERT_TRUE(within(20, [&] { return count("listen.stop.finalize.done") == 1; }));
    expectSaved(1);
    expectEndedWell(start({"toggle", "show"}).wait());
    ASSERT_TRUE(within(20, [&] { return count("listen.start.task") == 2; }));
    // Stop, start, stop, start: the last one takes effect when the session is saved.
    expectEndedWell(start({"toggle", "toggle", "toggle", "toggle"}).wait());
    ASSERT_TRUE(within(20, [&] { return count("listen.start.task") == 3; }));
    const ProgramRun mistyped = start({"file:no/such.wav"}).wait();
    EXPECT_EQ(mistyped.status, 66);
    EXPECT_NE(mistyped.error.find("no/such.wav"), std::string::npos) << mistyped.error;
    first.send(SIGTERM); // while it starts
    expectEndedWell(first.wait());
    EXPECT_FALSE(hasJournal());
    EXPECT_EQ(start({"nonsense"}).wait().status, 64);
    EXPECT_EQ(start({""}).wait().status, 64);
}

TEST_F(WindowProgram, CaptionsAndTranslatesWhatTheComputerPlaysAlsoForAScreenReader) {
    const PrivateSoundServer sound;
    environment_.push_back("PULSE_SERVER=" + sound.address());
    startAccessibility();
    StartedProgram program = start({"start"});
    ASSERT_TRUE(within(30, [&] { return count("listen.start.transcriber.ready") == 1; }));
    const StartedProgram reader = screenReader({"read"});
    ASSERT_TRUE(within(10, [&] { return !reader.output().empty(); }));
    const Place window = place();
    pointer({"mousemove", std::to_string(window.x + 200), std::to_string(window.y + 150), "click",
             "3"});
    EXPECT_TRUE(within(10,
                       [&] { // the menu opens late on a busy computer
                           pointer({"key", "Down"});
                           return reader.output().find("focused\t'Stop captions'") !=
                                  std::string::npos;
                       }))
        << "Down leads to the first entry of the menu: " << reader.output();
    pointer({"key", "Escape"});
    const StartedProgram player("/usr/bin/paplay", {TESSARUNE_SAMPLE_SPEECH "/two_cities.wav"},
                                folder_.path(), environment_);
    const auto rowHas = [&](const char* words) {
        const std::string all = shown(reader);
        const auto row = all.find("list item\t");
        return row != std::string::npos && all.find(words, row) != std::string::npos;
    };
    EXPECT_TRUE(within(30, [&] { return rowHas("best of times") && rowHas("tempos"); }))
        << shown(reader);
    EXPECT_TRUE(
        within(5, [&] { return reader.output().find("announced\t") != std::string::npos; }));

    expectEndedWell(start({speech_}).wait()); // replaces the computer's sound as the source
    ASSERT_TRUE(within(20, [&] { return count("listen.start.transcriber.ready") == 2; }));
    EXPECT_TRUE(within(10, [&] {
        return shown(reader).find("Sound source: two_cities.wav") != std::string::npos;
    })) << shown(reader);
    ASSERT_TRUE(within(20, [&] { return hasRow(); })) << shown(reader);
    ASSERT_TRUE(within(5, [&] { return rowHas("best of times"); })) << shown(reader);
    StartedProgram closing = pressAt("Close", "listen.stop.engineDrain.start");
    ASSERT_TRUE(within(10, [&] { return closing.output() == "found\n"; }));
    expectEndedWell(start({"stop"}).wait());
    expectEndedWell(program.wait());
    expectSaved(2);
}

TEST_F(WindowProgram, ClosedAtAnyMomentItSavesAndEnds) {
    startAccessibility();
    for (const char* moment : {"listen.start.task", "listen.stop.audioCompress.start"}) {
        fs::remove_all(data_ / "Logs");
        StartedProgram program = start({speech_});
        StartedProgram closing = pressAt("Close", moment);
        const bool isStart = std::string_view(moment).find("start.") != std::string_view::npos;
        if (!isStart) {
            ASSERT_TRUE(within(30, [&] { return hasRow(); }));
            start({"stop"}).wait();
        }
        expectEndedWell(program.wait());
        if (!isStart)
            expectSaved(1);
    }
}

TEST_F(WindowProgram, AMissingFileAndAFailingRecordingAreShown) {
    startAccessibility();
    const StartedProgram reader = screenReader({"read"});
    const auto shows = [&](const char* text) {
        return shown(reader).find(text) != std::string::npos;
    };
    fs::create_directories(data_);
    auto other = FileLock::tryToTake(data_ / "Tessarune.lock"); // like another program that records
    StartedProgram silent = start({"file:no/such.wav"});
    EXPECT_TRUE(within(20, [&] { return shows("such.wav") && shows("already recording"); }))
        << shown(reader);
    other.reset();
    EXPECT_TRUE(within(10, [&] { return shows("such.wav") && !shows("already recording"); }))
        << shown(reader);
    silent.send(SIGTERM);
    EXPECT_EQ(silent.wait().status, 66);
    StartedProgram program("/usr/bin/prlimit", // the recording cannot grow beyond 300 kB
                           {"--fsize=300000", TESSARUNE_BIN "/tessarune", speech_}, folder_.path(),
                           environment_);
    ASSERT_TRUE(within(30, [&] { return count("audioRecorder.write.degraded") == 1; }));
    ASSERT_TRUE(within(30, [&] { return hasRow(); }));
    EXPECT_TRUE(within(10, [&] { return shows("The recording can no longer be written"); }))
        << shown(reader);
    program.send(SIGTERM);
    EXPECT_EQ(program.wait().status, 0);
}

TEST_F(WindowProgram, AStopCancelsAStartThatWaitsForItsSound) {
    const std::string pipe = (folder_ / "pipe").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    StartedProgram program = start({"file:" + pipe});
    ASSERT_TRUE(within(20, [&] { return count("app.launch") == 1; }));
    expectEndedWell(start({"show"}).wait()); // the waiting program still answers
    expectEndedWell(start({"stop"}).wait());
    EXPECT_TRUE(within(10, [&] { return open(pipe.c_str(), O_WRONLY | O_NONBLOCK) == -1; }))
        << "nothing waits for a writer of the pipe";
    program.send(SIGTERM);
    expectEndedWell(program.wait());
    EXPECT_EQ(count("listen.start.task"), 0u);
}

TEST_F(WindowProgram, ARequestShowsTheWindowThatAnswersIt) {
    const std::vector<std::string> captions{"search", "--onlyvisible", "--name", "^Tessarune$"};
    const auto captionsShow = [&] { return !pointer(captions).empty(); };
    StartedProgram program = start({});
    ASSERT_TRUE(within(20, [&] { return place().width > 0; }));
    expectEndedWell(start({}).wait());
    EXPECT_FALSE(within(1, captionsShow)) << "only the page of the first start shows";
    expectEndedWell(start({"start", "stop"}).wait());
    ASSERT_TRUE(within(20, captionsShow));
    ASSERT_TRUE(within(10, [&] { // the former request may show the window once more
        pointer({"search", "--onlyvisible", "--name", "^Tessarune$", "windowminimize"});
        return !captionsShow();
    }));
    expectEndedWell(start({"start"}).wait());
    EXPECT_TRUE(within(10, captionsShow)) << "a start of captions always shows them";
    program.send(SIGTERM);
    EXPECT_EQ(program.wait().status, 0); // Qt may report missing fonts for names of languages
}

TEST_F(WindowProgram, ReturnsToWhereTheUserPutItsWindow) {
    StartedProgram program = start({"show"});
    ASSERT_TRUE(within(20, [&] { return place().width > 0; }));
    const Place first = place();
    drag(3, [&](const Place& now) { // the border resizes the window
        return now.width < first.width && now.height < first.height && now.x == first.x;
    });
    Place last;
    drag(150, [&](const Place& now) { return now.x < first.x && now.y < first.y; }); // moves it
    EXPECT_TRUE(within(10, [&] {
        last = place();
        return contentsOf(folder_ / "config/Tessarune/settings.json").find(last.text()) !=
               std::string::npos;
    })) << last.text();
    program.send(SIGTERM);
    expectEndedWell(program.wait());
    const StartedProgram again = start({"show"});
    EXPECT_TRUE(within(10, [&] { return place() == last; })) << place().text() << last.text();
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
    // Another test's display may now have the number of the killed one. No server chooses 60000
    // without being told.
    environment_.insert(environment_.begin(), "DISPLAY=:60000");
    EXPECT_EQ(start({"show"}).wait().status, 69) << "a start fails without a display";
}

} // namespace
} // namespace tessarune::testing
