#include "tests/support/Rounds.h"
#include "tests/terminal/PrintedCaptions.h"
#include "tests/terminal/TerminalEmulator.h"

#include <gtest/gtest.h>

#include <random>

namespace tessarune {
namespace {

using Lines = std::vector<std::string>;

class WatchedScreen : public testing::PrintedCaptions {
  public:
    explicit WatchedScreen(ScreenSize size = {40, 24}) : terminal(size.rows) {
        output = makeScreenOutput(
            out.file(), [size] { return size; }, false);
    }
    Lines text() {
        terminal.write(out.take());
        return terminal.text();
    }
    testing::TerminalEmulator terminal;
};

TEST(ScreenOutputTests, ARowIsShownAtOnceAndItsTranslationLaterUnderIt) {
    WatchedScreen screen;
    screen.live("One, two");
    EXPECT_EQ(screen.text(), (Lines{"~One, two"}));
    screen.commit("One,");
    screen.live("two");
    EXPECT_EQ(screen.text(), (Lines{"One,", "~two"}));
    screen.commit("two.");
    screen.commit("Three.");
    screen.live("and");
    EXPECT_EQ(screen.text(), (Lines{"One,", "two.", "Three.", "~and"}));
    screen.translate(0, 1, "Un, deux.");
    EXPECT_EQ(screen.text(), (Lines{"One,", "two.", "  Un, deux.", "Three.", "~and"}));
    screen.output.status("still here");
    screen.fail(2, 2, "went wrong");
    EXPECT_EQ(screen.text(), (Lines{"One,", "two.", "  Un, deux.", "~· still here", "Three.",
                                    "~  ✗ went wrong", "~and"}));
    screen.commit("A rather long row that takes more lines than one.");
    screen.live("");
    screen.translate(3, 3, "Une ligne assez longue qui en prend plus.");
    Lines all = screen.text();
    EXPECT_EQ(Lines(all.begin() + 6, all.end()),
              (Lines{"A rather long row that takes more lines", "than one.",
                     "  Une ligne assez longue qui en prend", "  plus."}));
    screen.commit("Never answered.");
    screen.live("not said");
    screen.finish();
    EXPECT_EQ(screen.text().back(), "Never answered.");
}

TEST(ScreenOutputTests, APreviewStandsUnderItsSourceOnly) {
    WatchedScreen screen;
    const auto lead = [&](const std::string& text) {
        CaptionSegment row;
        row.sourceText = text;
        screen.core.liveLeadingSentences =
            text.empty() ? CaptionCore::Rows() : CaptionCore::Rows{row};
    };
    lead("I think so.");
    screen.preview = {"Je crois.", "I THINK so"};
    screen.live("And");
    EXPECT_EQ(screen.text(), (Lines{"~I think so. And", "~  Je crois."}));
    lead("");
    screen.commit("I think so.");
    EXPECT_EQ(screen.text(), (Lines{"I think so.", "~  Je crois.", "~And"}));
    screen.translate(0, 0, "Je le crois.");
    EXPECT_EQ(screen.text(), (Lines{"I think so.", "  Je le crois.", "~And"}));
}

TEST(ScreenOutputTests, ATranslationWhoseRowCannotBeRewrittenAnyMoreNamesTheRow) {
    WatchedScreen screen;
    for (int i = 0; i < 10; ++i) // only the last eight rows are rewritten
        screen.commit("Row " + std::to_string(i) + ".");
    screen.translate(0, 0, "Zéro.");
    screen.translate(2, 2, "Deux.");
    Lines expected;
    for (int i = 0; i < 3; ++i)
        expected.push_back("Row " + std::to_string(i) + ".");
    expected.insert(expected.begin() + 2, {"~↑ Row 0.", "  Zéro."});
    expected.push_back("  Deux.");
    for (int i = 3; i < 10; ++i)
        expected.push_back("Row " + std::to_string(i) + ".");
    EXPECT_EQ(screen.text(), expected);
}

/// Random rows, units, failures, live texts and sizes: in the end the screen has every row once and
/// in order, and every translation once.
TEST(ScreenOutputTests, NothingIsLostOrShownTwiceOnAnyScreen) {
    for (std::uint32_t seed = 1; seed <= testing::rounds(300); ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&](std::size_t limit) { return random() % limit; };
        WatchedScreen screen({12 + below(60), 2 + below(12)});
        Lines sources;
        Lines translations;
        std::size_t waiting = 0; // the first row without a translation or failure
        for (int step = 0; step < 60; ++step) {
            const std::size_t rows = sources.size();
            switch (below(6)) {
            case 0:
                screen.live((below(3) == 0 ? "x\033[2J\n" : "") + std::string(below(80), 'x'));
                break;
            case 1:
                if (below(2) == 0)
                    screen.output.status("mic\033[31m");
                else
                    screen.output.progress("12 %");
                break;
            case 2:
            case 3:
                sources.push_back("row" + std::to_string(rows));
                screen.commit(sources.back());
                break;
            default:
                if (waiting == rows)
                    break;
                const std::size_t last = waiting + below(std::min<std::size_t>(rows - waiting, 3));
                if (below(5) == 0) {
                    screen.fail(waiting, last, "bad");
                } else {
                    translations.push_back("unit" + std::to_string(last));
                    screen.translate(waiting, last, translations.back());
                }
                waiting = last + 1;
            }
            screen.text();
        }
        screen.finish();
        Lines foundSources;
        Lines foundTranslations;
        for (const std::string& line : screen.text()) {
            if (line.starts_with("row"))
                foundSources.push_back(line);
            else if (line.starts_with("  unit"))
                foundTranslations.push_back(line.substr(2));
            ASSERT_FALSE(line.starts_with("~x")) << "no live text remains";
            ASSERT_NE(line, "~12 %") << "no progress remains";
        }
        ASSERT_EQ(foundSources, sources);
        ASSERT_EQ(foundTranslations, translations);
    }
}

} // namespace
} // namespace tessarune
