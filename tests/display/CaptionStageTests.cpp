#include "Tessarune/display/CaptionStageRows.h"
#include "Tessarune/display/SmoothStreamingText.h"
#include "Tessarune/display/SubtitleChromeState.h"
#include "TessaruneCore/host/SimulatedHost.h"

#include <gtest/gtest.h>

#include <string>

namespace tessarune {
namespace {

TEST(SmoothStreamingText, RevealsWordByWordFasterWithALargerBacklog) {
    const auto revealed = [](SimulatedHost& host, SmoothStreamingText& text, double seconds) {
        host.advanceBy(seconds);
        return text.renderedTail().settled;
    };
    struct Case {
        std::int64_t paceMS;
        std::size_t backlog;
        double delay; ///< seconds between the first word and the second
    };
    for (const auto& [paceMS, backlog, delay] : std::initializer_list<Case>{
             {180, 48, 0.09}, {180, 24, 0.18}, {180, 4, 0.18}, {60, 24, 0.09}, {180, 400, 0.09}}) {
        SimulatedHost host;
        SmoothStreamingText text(host);
        text.options.paceMS = paceMS;
        text.stream("a " + std::string(backlog - 2, 'b'));
        EXPECT_EQ(revealed(host, text, 0), "a ") << "backlog " << backlog;
        EXPECT_EQ(revealed(host, text, delay - 0.001), "a ") << "backlog " << backlog;
        EXPECT_NE(revealed(host, text, 0.002), "a ") << "backlog " << backlog;
    }
    SimulatedHost host;
    SmoothStreamingText text(host);
    text.options.highlightLastWord = true;
    text.stream(std::string(401, 'x'));
    host.advanceBy(0);
    EXPECT_EQ(text.revealedCount(), 401U) << "a backlog of 401 characters is revealed at once";
    text.stream("gone back");
    EXPECT_EQ(text.revealedCount(), 9U);
    EXPECT_EQ(text.renderedTail(), (SmoothStreamingText::RenderedTail{"gone ", "back"}));
    text.options.reduceMotion = true;
    text.stream("gone back 你好吗");
    EXPECT_EQ(text.revealedCount(), 13U);
    text.stream("   ");
    EXPECT_EQ(text.renderedTail().newestWord, "");
}

TEST(SubtitleChromeState, HidesAMomentAfterThePointerLeftUnlessAMenuIsOpen) {
    SimulatedHost host;
    SubtitleChromeState chrome(host);
    chrome.presentForAWhile();
    host.advanceBy(3);
    EXPECT_FALSE(*chrome.isPresented) << "without the pointer it hides after three seconds";
    chrome.setBodyHovering(true);
    chrome.setBodyHovering(false);
    host.advanceBy(0.1);
    chrome.setBodyHovering(true); // the pointer comes back in time
    host.advanceBy(1);
    EXPECT_TRUE(*chrome.isPresented);
    chrome.menuDidBeginTracking();
    chrome.setBodyHovering(false);
    host.advanceBy(1);
    EXPECT_TRUE(*chrome.isPresented);
    chrome.menuDidEndTracking();
    host.advanceBy(0.15); // the chrome hides after 0.16 seconds
    EXPECT_TRUE(*chrome.isPresented);
    host.advanceBy(0.02);
    EXPECT_FALSE(*chrome.isPresented);
}

LiveCaptionDisplaySegment stageRow(const std::string& source, const std::string& translation = "") {
    CaptionSegment segment;
    segment.id = UUID::random();
    segment.sourceText = source;
    segment.translatedText = translation;
    return *LiveCaptionDisplaySegment::from(segment);
}

TEST(CaptionStageRows, AGhostJoinsTheUntranslatedRowOfItsSource) {
    using Content = CaptionStageRows::Block;
    LiveCaptionDisplayFrame frame;
    frame.sourceTextTail.push_back(stageRow("Hello.", "你好。"));
    frame.sourceTextTail.push_back(stageRow("How are you?"));
    frame.livePartialRow = stageRow("I am");
    const CaptionStageRows before(frame, Content::bilingual, false);
    EXPECT_EQ(before.firstPrimary(), 1U);
    frame.ghostTranslationText = "你好吗？";
    frame.ghostTranslationSourceText = "how are you";
    const CaptionStageRows rows(frame, Content::bilingual, false);
    EXPECT_EQ(rows.row(1), (CaptionStageRow{"How are you?", "你好吗？", true, false}));
    EXPECT_EQ(rows.row(2), (CaptionStageRow{"I am", "", false, true}));
    EXPECT_EQ(rows.changedSince(before), std::vector<std::size_t>{1});
    const CaptionStageRows sources(frame, Content::source, false);
    EXPECT_EQ(sources.changedSince(rows), (std::vector<std::size_t>{0, 1})) << "translated rows";
    EXPECT_EQ(CaptionStageRows(frame, Content::translations, false).size(), 1U);
    frame.ghostTranslationSourceText = "hello";
    EXPECT_FALSE(CaptionStageRows(frame, Content::bilingual, false).row(0).isGhost);
    EXPECT_EQ(CaptionStageRows(frame, Content::translations, false).size(), 0U);
    frame.livePartialRow = stageRow("I am well. And you");
    for (const auto& [source, previews] : {std::pair("I am well.", 1U), {"I am we", 0U}}) {
        frame.ghostTranslationSourceText = source; // no row has this source
        EXPECT_FALSE(CaptionStageRows(frame, Content::bilingual, false).row(2).isGhost);
        EXPECT_EQ(CaptionStageRows(frame, Content::translations, false).size(), previews);
    }
    frame.sessionPhase = LiveSessionPhase::failed;
    EXPECT_EQ(CaptionStageRows(frame, Content::source, false).growing(), 3U) << "a failed session";
}

} // namespace
} // namespace tessarune
