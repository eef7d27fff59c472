#include "Tessarune/platform/qt-host/QtHost.h"
#include "Tessarune/ui/desktop/DesktopListening.h"
#include "Tessarune/ui/desktop/DesktopRequest.h"
#include "TessaruneCore/text/Localization.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WAVBytes.h"
#include "tests/ui/OffscreenApplication.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <string>
#include <vector>

namespace tessarune {
namespace {

using Strings = std::vector<std::string>;

/// The program without its windows: the real application, in folders of its own.
class DesktopListeningTests : public ::testing::Test {
  protected:
    DesktopListeningTests() {
        sound.fileName.onDidChange([this](const std::string& name) { heard.push_back(name); });
    }
    ~DesktopListeningTests() override {
        listening.end();
        listening.stop(script);
        EXPECT_TRUE(runUntil([&] { return !session.store().isStopping(); }));
        bool hasEnded = false; // the engine must not be loading when the process exits
        spawn(Executor::main(host), endRefinement(application.refinement, hasEnded));
        EXPECT_TRUE(runUntil([&] { return hasEnded; }));
        setLocalizationTable({}); // the application has set it
    }

    bool setEnvironment() const {
        for (const char* place : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
            qputenv(place, folder.path().c_str());
        qputenv("PULSE_SERVER", "unix:/nowhere");
        offscreenApplication();
        return true;
    }
    std::filesystem::path toneFile(const char* name, double seconds) const {
        std::ofstream(folder / name) << testing::wavBytes(testing::tone(seconds, 16000), 16000);
        return folder / name;
    }
    static Task<void> endRefinement(HistoryRefinementService& refinement, bool& hasEnded) {
        Task<void> ending = refinement.end();
        co_await ending;
        hasEnded = true;
    }
    const SessionView& view() { return session.store().view(); }
    /// Whether all controls offer to stop, not to start.
    bool showsStop() { return *view().isListening || *listening.waiting(); }
    bool isPhase(LiveSessionPhase phase) {
        return runUntil([&] { return *view().sessionPhase == phase; });
    }

    const testing::TemporaryFolder folder;
    const bool isPrivate = setEnvironment(); // the members below read the environment
    const LiveSessionControlTrigger script = LiveSessionControlTrigger::programmatic();
    const LiveSessionControlTrigger user = LiveSessionControlTrigger::toolbarPill();
    QtHost host;
    Application application{host, "ui-tests"};
    DesktopSound sound{host};
    ListeningSession session{application, sound, {}};
    DesktopNotices notices;
    DesktopListening listening{{host, sound, session, notices, [] { return true; }}};
    Strings heard; ///< the sources: names of files, and "" for the computer
};

TEST_F(DesktopListeningTests, AToggleReversesWhatTheControlsShow) {
    const auto pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(showsStop());
    EXPECT_TRUE(runUntil([&] { return application.defaults.value("speechStatus").has_value(); }));
    listening.captionFiles({pipe});
    EXPECT_TRUE(showsStop()) << "a file is being opened";
    ASSERT_TRUE(runUntil([&] { return listening.waiting()->value_or("") != ""; }));
    listening.toggle(user);
    EXPECT_FALSE(showsStop());

    listening.captionFiles({toneFile("long.wav", 60)});
    ASSERT_TRUE(isPhase(LiveSessionPhase::listening));
    EXPECT_FALSE(*listening.waiting());
    listening.toggle(script);
    EXPECT_FALSE(showsStop());
    listening.toggle(script);
    EXPECT_TRUE(showsStop()) << "a start waits until the session is saved";
    EXPECT_EQ(*view().sessionPhase, LiveSessionPhase::stopping);
    listening.toggle(user);
    EXPECT_FALSE(showsStop());
    listening.start(script);
    EXPECT_TRUE(showsStop());
    ASSERT_TRUE(isPhase(LiveSessionPhase::listening));

    // Another source, which waits until the file's session is saved.
    listening.selectSource(AudioSource::microphone("missing"));
    EXPECT_TRUE(showsStop());
    listening.toggle(user);
    EXPECT_FALSE(showsStop());
    EXPECT_TRUE(runUntil([&] { return heard.back().empty(); }));
    EXPECT_EQ(*view().sessionPhase, LiveSessionPhase::idle);
    EXPECT_FALSE(showsStop());
}

TEST_F(DesktopListeningTests, FilesFollowEachOtherUntilAStop) {
    std::ofstream(folder / "text.wav") << "no sound";
    const auto first = toneFile("first.wav", 0.2);
    const auto second = toneFile("second\n.wav", 0.2);
    listening.captionFiles({folder / "text.wav", first, folder / "gone.wav", second});
    ASSERT_TRUE(runUntil([&] { return !heard.empty() && heard.back().empty(); }));
    EXPECT_EQ(heard, (Strings{"first.wav", "gone.wav", "second .wav", ""}));
    for (const char* name : {"text.wav", "gone.wav"})
        EXPECT_NE(notices.shown()->text.find(name), std::string::npos) << notices.shown()->text;
    EXPECT_TRUE(notices.shown()->isTrouble);
    notices.dismissShown();

    heard.clear();
    listening.captionFiles({toneFile("long.wav", 60), second});
    ASSERT_TRUE(isPhase(LiveSessionPhase::listening));
    EXPECT_TRUE(notices.shown()->text.starts_with(localized("接下来还有 %lld 个文件。", {"1"})));
    EXPECT_FALSE(notices.shown()->isTrouble);
    listening.toggle(user);
    listening.captionFiles({first});
    ASSERT_TRUE(runUntil([&] { return heard.back().empty(); }));
    EXPECT_EQ(heard, (Strings{"long.wav", "first.wav", ""}));

    notices.dismissShown();
    listening.captionFiles({folder / "long.wav", second});
    ASSERT_TRUE(isPhase(LiveSessionPhase::listening));
    listening.captionFiles({folder / "long.wav", first}); // replaces the files still to come
    ASSERT_TRUE(
        runUntil([&] { return notices.shown()->text.find("second .wav") != std::string::npos; }));
    ASSERT_TRUE(isPhase(LiveSessionPhase::stopping) && isPhase(LiveSessionPhase::listening));
    session.store().stopListening(script); // as a long silence does
    for (const char* name : {"second .wav", "first.wav"})
        EXPECT_NE(notices.shown()->text.find(name), std::string::npos) << notices.shown()->text;
}

TEST(DesktopNoticesTests, ThreeAreShownAtATimeAndTheOthersFollow) {
    DesktopNotices notices;
    for (const char* text : {"1", "2", "3", "4", "5"})
        notices.tell(text);
    EXPECT_EQ(notices.shown()->text, "5\n4\n3\n" + localized("And %lld more.", {"2"}));
    notices.dismissShown();
    EXPECT_EQ(notices.shown()->text, "2\n1");
    notices.tell(DesktopNotices::Topic::silence, "6");
    EXPECT_TRUE(notices.has(DesktopNotices::Topic::silence));
    notices.dismissShown();
    EXPECT_FALSE(notices.has(DesktopNotices::Topic::silence));
    EXPECT_EQ(notices.shown()->text, "");
}

TEST(DesktopRequestTests, AnArgumentIsAnActionAFileOrUnknown) {
    char start[] = "start", prefixed[] = "file:a b", address[] = "file:///tmp/a%20b.wav",
         path[] = "./film.mkv", mistake[] = "strat", empty[] = "";
    std::vector<char*> arguments{start, prefixed, address, path};
    DesktopRequest request = DesktopRequest::of(arguments);
    EXPECT_EQ(request.actions, std::vector{DesktopAction::start});
    EXPECT_EQ(request.files,
              (std::vector<std::filesystem::path>{"a b", "/tmp/a b.wav", "./film.mkv"}));
    EXPECT_FALSE(request.unknown);
    for (char* wrong : {mistake, empty}) {
        arguments = {wrong};
        EXPECT_EQ(DesktopRequest::of(arguments).unknown, wrong);
    }
}

} // namespace
} // namespace tessarune
