#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Localization.h"

#include <gtest/gtest.h>

#include <vector>

namespace tessarune {
namespace {

TEST(TessaruneLogTests, TextIsBuiltOnlyIfThereIsASink) {
    int made = 0;
    const auto text = [&] { return "line " + std::to_string(++made); };
    TessaruneLog::setSink({});
    TessaruneLog::asr.fault(text);
    EXPECT_EQ(made, 0);

    std::vector<std::string> lines;
    TessaruneLog::setSink(
        [&](TessaruneLogger::Level level, std::string_view category, const std::string& line) {
            lines.push_back(std::to_string(static_cast<int>(level)) + " " + std::string(category) +
                            " " + line);
        });
    TessaruneLog::asr.debug(text);
    TessaruneLog::storage.fault(text);
    TessaruneLog::setSink({});
    TessaruneLog::app.notice(text);
    EXPECT_EQ(lines, (std::vector<std::string>{"0 asr line 1", "3 storage line 2"}));
}

} // namespace
} // namespace tessarune
