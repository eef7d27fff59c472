#include "Terminal/SessionNews.h"
#include "Tessarune/session/LiveCaptionCoreFactory.h"
#include "Tessarune/shell/AppSettings.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/support/MemoryUserDefaults.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

TEST(SessionNewsTests, AMessageOfTheTranslationThatReturnsIsNotRepeated) {
    SimulatedHost host;
    testing::MemoryUserDefaults defaults;
    AppSettings settings{defaults};
    LiveCaptionDisplayStore display{[] { return 0.0; }};
    SessionTranslation none;
    CaptionCore core = LiveCaptionCoreFactory::make(host, settings);
    SessionView view{display, core, none.view()};
    std::string said;
    const SessionNews news(view, "", false,
                           {[] {}, [&](const std::string& text) { said += text + "\n"; },
                            [](const auto&) {}, [](auto) {}});
    view.sessionPhase = LiveSessionPhase::listening;
    using Kind = SessionStatus::Kind;
    for (int round = 0; round < 2; ++round) {
        view.status = SessionStatus{Kind::translation, "Off."};
        view.status = SessionStatus{}; // after a caption
        view.status = SessionStatus{Kind::listeningTo, "A"};
        view.status = SessionStatus{};
    }
    EXPECT_EQ(said, "Off.\n正在收听：A\n正在收听：A\n");
}

} // namespace
} // namespace tessarune
