#include "TessaruneCore/translation/TranslationSupport.h"
#include "tests/terminal/PrintedCaptions.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

class PlainOutputTests : public ::testing::Test, public testing::PrintedCaptions {
  protected:
    PlainOutputTests() { output = makePlainOutput(out.file(), errors.file(), host, false); }
};

TEST_F(PlainOutputTests, ATranslationStandsUnderTheLastRowOfItsUnit) {
    commit("One,");
    commit("two.");
    commit("Three.");
    EXPECT_EQ(out.take(), "One,\ntwo.\n") << "a row that may belong to the same unit comes at once";
    translate(0, 1, "Un, deux.");
    EXPECT_EQ(out.take(), "\tUn, deux.\nThree.\n");
    translate(2, 2, "Trois.");
    commit(" ");
    translate(3, 3, "");
    EXPECT_EQ(out.take(), "\tTrois.\n \n");
    commit("Four.");
    fail(4, 4, "went wrong");
    commit("Five.");
    EXPECT_EQ(out.take(), "Four.\nFive.\n");
    EXPECT_EQ(errors.take(), "Not translated: Four. (went wrong)\n");
    fail(5, 5, std::string(TranslationSupport::languageResourceNotReadyMessage("fr")));
    EXPECT_NE(errors.take().find("--languages download fr"), std::string::npos);
}

TEST_F(PlainOutputTests, AMissingTranslationDelaysOneRowByASecondAndNoLaterRow) {
    commit("One.");
    commit("Two.");
    host.advanceBy(0.99);
    EXPECT_EQ(out.take(), "One.\n");
    host.advanceBy(0.02);
    EXPECT_EQ(out.take(), "Two.\n") << "printed after a second, without new speech";
    commit("Three.");
    EXPECT_EQ(out.take(), "Three.\n");
    translate(0, 0, "Un.");
    commit("Four.");
    EXPECT_EQ(out.take(), "\tUn.\nFour.\n") << "no row waits while translations are late";
    for (std::size_t i = 1; i < 4; ++i)
        translate(i, i, std::to_string(i));
    EXPECT_EQ(out.take(), "\t1\n\t2\n\t3\n");
    commit("Five.");
    commit("Six.");
    EXPECT_EQ(out.take(), "Five.\n") << "with no late translation, rows wait again";
    finish();
    EXPECT_EQ(out.take(), "Six.\n");
    host.runUntilIdle();
    EXPECT_EQ(out.take(), "");
}

/// A session empties its rows when another recogniser is chosen.
TEST_F(PlainOutputTests, EveryOutputPrintsTheRowsAfterTheListWasEmptied) {
    const auto size = [] { return ScreenSize{40, 24}; };
    CaptionOutput outputs[] = {std::move(output), makeScreenOutput(out.file(), size, false),
                               makeJSONOutput(
                                   out.file(), [] { return 0.0; }, false)};
    awaits = false;
    for (CaptionOutput& each : outputs) {
        output = std::move(each);
        for (const char* text : {"One.", "Two.", "Three."})
            commit(text);
        core.committedSegments = CaptionCore::Rows();
        update();
        out.take();
        commit("Four.");
        EXPECT_NE(out.take().find("Four."), std::string::npos);
        core.committedSegments = CaptionCore::Rows();
    }
}

TEST_F(PlainOutputTests, WithoutTranslationNothingWaits) {
    awaits = false;
    commit("One.");
    commit("T\033]0;wo\n.");
    EXPECT_EQ(out.take(), "One.\nT\uFFFD]0;wo .\n") << "each row is one line, without controls";
    translate(0, 1, "\033[2JUn.");
    EXPECT_EQ(out.take(), "\t\uFFFD[2JUn.\n");
    output.status("mic \033c:\n  usb");
    EXPECT_EQ(errors.take(), "mic \uFFFDc:\n  usb\n");
    finish();
    EXPECT_EQ(out.take() + errors.take(), "");
}

} // namespace
} // namespace tessarune
