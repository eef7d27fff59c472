#include "Tessarune/display/CaptionFollowDriver.h"
#include "TessaruneCore/host/SimulatedHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace tessarune {
namespace {

/// Ten rows in a view 100 points high. Tests set the height of the rows and scroll them.
struct ScriptedList final : CaptionListView {
    std::optional<Geometry> geometry() const override {
        if (!isOnScreen)
            return std::nullopt;
        const double end = std::max(documentHeight - 100, 0.0);
        return Geometry{clipY, 100, documentHeight, end, 10};
    }
    void scrollToEnd() override {
        clipY = geometry()->legalBottomY;
        ++scrolls;
    }
    void redraw() override { ++redraws; }
    void nudgeWindow() override { ++nudges; }
    bool isFullScreen() const override { return fullScreen; }

    double clipY = 900;
    double documentHeight = 1000;
    bool fullScreen = false;
    bool isOnScreen = true;
    int scrolls = 0;
    int redraws = 0;
    int nudges = 0;
};

class CaptionFollowDriverTests : public ::testing::Test {
  protected:
    void scroll(std::initializer_list<double> distancesFromEnd, bool ends = false) {
        driver.userWillStartLiveScroll();
        for (const double distance : distancesFromEnd) {
            list.clipY = list.geometry()->legalBottomY - distance;
            driver.userDidLiveScroll();
        }
        if (ends)
            driver.userDidEndLiveScroll();
    }
    void grow(double height) {
        list.documentHeight += height;
        driver.update(++revision, 5);
        driver.documentFrameChanged();
        driver.frameHeartbeat();
    }

    SimulatedHost host{1000};
    ScriptedList list;
    CaptionFollowState state;
    std::vector<std::string> events;
    CaptionFollowDriver driver{
        host, list, state,
        [this](const std::string& name, const LogFields&, bool) { events.push_back(name); }};
    std::uint64_t revision = 0;
};

TEST_F(CaptionFollowDriverTests, StopsAndResumesFollowingAtItsTwoThresholds) {
    struct Case {
        std::initializer_list<double> distances; // following stops at 64, resumes at 12
        bool isPinned;
    };
    for (const auto& [distances, isPinned] :
         std::initializer_list<Case>{{{63}, true},
                                     {{64}, false},
                                     {{200, 13}, false},
                                     {{200, 12}, true},
                                     {{200, 13, 12.5, 63}, false}}) {
        driver.returnToNewest();
        scroll(distances);
        EXPECT_EQ(driver.isPinned(), isPinned) << "at distance " << *(distances.end() - 1);
        EXPECT_EQ(*state.isReviewing, !isPinned);
    }
    // A touch that hardly moves the list returns to the newest line.
    driver.returnToNewest();
    scroll({1}, true);
    EXPECT_TRUE(driver.isPinned());
    EXPECT_EQ(list.clipY, 900);
}

TEST_F(CaptionFollowDriverTests, FollowsNewRowsOnlyWhileItIsPinned) {
    grow(20);
    grow(20);
    host.advanceBy(0.001);
    EXPECT_EQ(list.clipY, 940);
    EXPECT_EQ(list.scrolls, 1) << "a burst of changes causes one scroll";
    scroll({300}, true);
    const double readingAt = list.clipY;
    grow(50);
    host.advanceBy(0.1);
    EXPECT_EQ(list.clipY, readingAt);
    EXPECT_FALSE(driver.isPinned());
    grow(80 - list.documentHeight); // everything was cleared
    host.advanceBy(0.1);
    EXPECT_TRUE(driver.isPinned()) << "a list that fits is always pinned";
}

TEST_F(CaptionFollowDriverTests, ReturnsWhenTheUserHasNotScrolledForAWhile) {
    driver.update(1, 5);
    scroll({300}, true);
    host.advanceBy(4.0);
    scroll({310}, true); // restarts the timer of five seconds
    host.advanceBy(4.9);
    EXPECT_FALSE(driver.isPinned());
    host.advanceBy(0.11);
    EXPECT_TRUE(driver.isPinned());
    EXPECT_EQ(list.clipY, 900);
    EXPECT_EQ(std::ranges::count(events, "idleReturnFired"), 1);
    scroll({300}, true);
    host.advanceBy(4.9);
    scroll({300}); // a finger that rests on the list
    host.advanceBy(0.2);
    EXPECT_FALSE(driver.isPinned());

    scroll({300}, true);
    driver.update(2, 2); // a changed setting takes effect at once
    host.advanceBy(2.1);
    EXPECT_TRUE(driver.isPinned());
}

/// Frames keep coming, but the list does not draw.
TEST_F(CaptionFollowDriverTests, AsksForARedrawOfAListThatStoppedDrawing) {
    driver.update(1, 30);
    driver.frameHeartbeat(); // includes the first preventive nudge
    const int before = list.nudges;
    for (int second = 0; second < 12; ++second) {
        host.advanceBy(1);
        driver.frameHeartbeat();
    }
    EXPECT_EQ(list.nudges, before + 1) << "a stall causes one nudge within 30 seconds";
    EXPECT_GT(list.redraws, 0);
    list.fullScreen = true;
    host.advanceBy(60); // the next preventive nudge is due after 45 seconds
    driver.update(2, 30);
    driver.frameHeartbeat();
    EXPECT_EQ(list.nudges, before + 1) << "no preventive nudge in full screen";
}

/// The list is updated with new rows, but its height stays the same.
TEST_F(CaptionFollowDriverTests, AsksForARedrawOfAListWhoseLayoutIsFrozen) {
    for (const bool isOnScreen : {false, true}) {
        list.isOnScreen = isOnScreen;
        driver.attached();
        driver.frameHeartbeat(); // includes the first preventive nudge
        const int before = list.nudges;
        for (int second = 0; second < 31; ++second) {
            host.advanceBy(1);
            driver.update(++revision, 30);
            driver.frameHeartbeat();
        }
        EXPECT_EQ(list.nudges, before + (isOnScreen ? 1 : 0));
    }
}

} // namespace
} // namespace tessarune
