#include "Tessarune/platform/qt-host/LostDisplay.h"
#include "Tessarune/platform/qt-host/QtHost.h"
#include "tests/ui/OffscreenApplication.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

namespace tessarune {
namespace {

TEST(QtHost, RunsBlocksOfAnyThreadInOrderAndDelayedOnesWhenTheyAreDue) {
    offscreenApplication();
    QtHost host;
    std::string order;
    host.after(0.02, [&] { order += "later "; });
    DelayedCall cancelled = host.after(0.01, [&] { order += "cancelled "; });
    host.post([&] {
        order += host.isOnMainQueue() ? "first " : "elsewhere ";
        cancelled.cancel();
        host.post([&] { order += "third "; });
    });
    host.post([&] { order += "second "; });
    ASSERT_TRUE(runUntil([&] { return order.ends_with("later "); }));
    EXPECT_EQ(order, "first second third later ");

    bool wasMain = true;
    std::thread([&] {
        wasMain = host.isOnMainQueue();
        host.post([&] { order = "from elsewhere"; });
    }).join();
    EXPECT_FALSE(wasMain);
    EXPECT_TRUE(runUntil([&] { return order == "from elsewhere"; }));
}

/// The host runs so many blocks in several turns of the event loop.
TEST(QtHost, RunsEachOfManyBlocksAndReleasesPendingOnesAtItsEnd) {
    offscreenApplication();
    int runs = 0;
    const auto held = std::make_shared<int>(0);
    {
        QtHost host;
        for (int i = 0; i < 1000; ++i)
            host.post([&] { ++runs; });
        ASSERT_TRUE(runUntil([&] { return runs == 1000; }));
        host.after(0, [held, &runs] { ++runs; });
    }
    QCoreApplication::processEvents();
    EXPECT_EQ(runs, 1000);
    EXPECT_EQ(held.use_count(), 1);
}

/// Qt reports the loss on whichever thread next uses the display.
TEST(LostDisplay, TheLastWorkRunsOnTheMainThreadUnlessThatIsBlocked) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const bool isBlocked : {false, true}) {
        EXPECT_EXIT(
            {
                offscreenApplication();
                const std::thread::id main = std::this_thread::get_id();
                const LostDisplay lost([main] {
                    std::cerr << (std::this_thread::get_id() == main ? "saved" : "elsewhere");
                });
                std::thread drawing(
                    [] { qWarning("The X11 connection broke: I/O error (code 1)"); });
                if (!isBlocked) {
                    // A slow disk may block the main thread for this long.
                    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
                    runUntil([] { return false; });
                }
                drawing.join();
            },
            ::testing::ExitedWithCode(EXIT_FAILURE), isBlocked ? "elsewhere" : "saved");
    }
}

} // namespace
} // namespace tessarune
