#include "tests/ui/CaptionWindowFixture.h"

#include <gtest/gtest.h>

#include <QTest>

namespace tessarune {
namespace {

using Kind = SessionStatus::Kind;

class CaptionWindowLookTests : public CaptionWindowFixture {};

TEST_F(CaptionWindowLookTests, EveryTextStandsOutFromTheBackground) {
    const auto luminance = [](const QColor& text, double opacity, double below) {
        double sum = 0.05; // in WCAG's contrast ratio, each luminance is increased by this
        for (const auto& [value, weight] :
             {std::pair(text.redF(), 0.2126), {text.greenF(), 0.7152}, {text.blueF(), 0.0722}}) {
            const double seen = value * opacity + below * (1 - opacity);
            sum +=
                weight * (seen <= 0.04045 ? seen / 12.92 : std::pow((seen + 0.055) / 1.055, 2.4));
        }
        return sum;
    };
    captions.settle("Before.", "之前。");
    captions.settle("Waits for its translation.");
    captions.settle("Newest.");
    captions.speak("Open");
    captions.frame.ghostTranslationText = "预览";
    const QColor background =
        captions.window->window().property("model").value<CaptionWindowModel*>()->background();
    for (const char* const previewed : {"Waits for its translation.", "Open"}) {
        captions.frame.ghostTranslationSourceText = previewed;
        captions.publish();
        runFor(700); // until the rows have faded in
        for (const auto* const text : list()->findChildren<QQuickItem*>()) {
            if (!text->isVisible() || !text->property("wrapMode").isValid())
                continue;
            for (const double screen : {0, 1}) { // black and white behind the window
                const double below = screen * (1 - background.alphaF());
                EXPECT_GE(
                    luminance(text->property("color").value<QColor>(), text->opacity(), below) /
                        luminance(background, background.alphaF(), screen),
                    4.5) // WCAG's least contrast
                    << "the contrast of " << text->property("text").toString().toStdString();
            }
        }
    }
}

TEST_F(CaptionWindowLookTests, ALongNoticeIsNotCutOffInASmallWindow) {
    QQuickWindow& window = captions.window->window();
    window.resize(380, 300);
    const auto isBelowToolbar = [&] { // the toolbar's buttons end above 48
        return window.findChild<QQuickItem*>("notice")->mapToScene({0, 0}).y() >= 48;
    };
    captions.notice =
        CaptionNotice{"Nothing can be recorded: /home/somebody/.local/share/Tessarune "
                      "cannot be written. Captions and translations go on, and none of "
                      "them is kept until there is a folder for them."};
    captions.settle("Not covered by it.");
    captions.publish();
    runFor(50);
    const auto* const notice = window.findChild<QQuickItem*>("notice");
    const auto* const text = notice->findChild<QQuickItem*>("text");
    EXPECT_FALSE(text->property("truncated").toBool());
    EXPECT_FALSE(notice->property("isTrouble").toBool());
    EXPECT_GE(notice->height(), text->height());
    EXPECT_LE(notice->width(), window.width());
    EXPECT_LE(newest()->mapToScene({0, newest()->height()}).y(), notice->mapToScene({0, 0}).y());
    captions.enter(LiveSessionPhase::failed, Kind::transcriptNotSaved); // shows a message, too
    window.resize(380, 180);
    EXPECT_TRUE(runUntil(isBelowToolbar)) << "the toolbar does not cover the notice's button";
    captions.frame.sourceTextTail = {};
    captions.enter(LiveSessionPhase::stopping, Kind::silent); // shows a button, too
    captions.publish();
    runFor(50);
    EXPECT_TRUE(isBelowToolbar());
}

TEST_F(CaptionWindowLookTests, ALowWindowGivesUpItsMarginsToShowLargeTypeWhole) {
    captions.settings.sourceFontSize = 96;
    captions.settings.translationFontSize = 72;
    captions.window->window().resize(940, 240);
    captions.settle("Before.", "之前。");
    captions.settle("Newest.");
    captions.publish();
    const auto isWhole = [&] {
        const QQuickItem* const row = newest();
        const double top = row ? row->mapToScene({0, 0}).y() : -1;
        return row && row->opacity() == 1 && top >= 0 &&
               top + row->property("sourceItem").value<QQuickItem*>()->height() <= 240;
    };
    EXPECT_TRUE(runUntil(isWhole)) << newest()->mapToScene({0, 0}).y();
    captions.settings.subtitleBottomPadding = 10000;
    // Rows that are higher than the window must not move the list while it lays them out.
    for (const int size : {200, 24}) {
        captions.settings.sourceFontSize = size;
        captions.settings.translationFontSize = size;
        for (const auto layout :
             {SubtitleLayoutMode::lyrics, SubtitleLayoutMode::bilingualCompare}) {
            captions.settings.subtitleLayoutMode = layout;
            captions.settle("And it goes on in rows that are higher than all of the window.",
                            "译文");
            captions.publish();
            runFor(50);
            EXPECT_TRUE(newest() && newest()->opacity() > 0 &&
                        newest()->mapToScene({0, 0}).y() < 200);
        }
    }
}

TEST_F(CaptionWindowLookTests, ReopensAtItsPlaceUnlessThatIsOffTheScreen) {
    const QRect place(40, 30, 500, 250);
    captions.window->window().setGeometry(place);
    captions.window->hide();
    captions.window.reset();
    captions.open();
    EXPECT_EQ(captions.window->window().geometry(), place);
    captions.window->window().setGeometry({5000, 5000, 500, 250});
    captions.window->hide();
    captions.window.reset();
    captions.open();
    EXPECT_LT(captions.window->window().x(), 5000);
}

} // namespace
} // namespace tessarune
