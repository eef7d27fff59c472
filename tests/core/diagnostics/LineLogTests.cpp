#include "TessaruneCore/diagnostics/JSONLine.h"
#include "TessaruneCore/diagnostics/LineLogWriter.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

namespace tessarune {
using testing::contentsOf;
using testing::TemporaryFolder;

namespace {

LineLogWriter::Encode line(std::string text) {
    return [text = std::move(text)] { return text; };
}

TEST(LineLogWriterTests, AFullDiskLosesLinesAndNothingElse) {
    SimulatedHost host;
    auto writer = LineLogWriter::open(host, "test", "/dev/full");
    ASSERT_TRUE(writer);
    writer->append(line("lost"));
    writer->close();
}

TEST(LineLogWriterTests, ALineThatWasCutShortDoesNotRunIntoTheNext) {
    TemporaryFolder folder;
    SimulatedHost host;
    auto writer = LineLogWriter::open(host, "test", folder / "log");
    writer->append(line("whole"));
    host.runUntilIdle();

    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit small = before;
    small.rlim_cur = 9;
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    writer->append(line("cut short"));
    writer->append(line("lost"));
    host.runUntilIdle();
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);

    writer->append(line("whole again"));
    writer->append([] { return std::nullopt; });
    writer->append(line("and again"));
    writer->close();
    EXPECT_EQ(contentsOf(folder / "log"), "whole\ncut\nwhole again\nand again\n");
}

TEST(JSONLineTests, ObjectsKeepTheOrderAndThePrecisionOfTheirFields) {
    const auto text =
        JSONLine()
            .add("z", 0.1 + 0.2)
            .add("a", std::int64_t{-9223372036854775807})
            .add("absent", std::optional<double>())
            .add("text", std::string("q\"\\\n\t\x01\x1F/\u007Fé😀\xE4\xBD"))
            .add("none", std::vector<std::string>{})
            .add("texts", std::vector<std::string>{"", "b"})
            .add("objects", std::vector<JSONLine>{JSONLine(), JSONLine().add("x", 1.0)})
            .text();
    EXPECT_EQ(text, "{\"z\":0.30000000000000004,\"a\":-9223372036854775807,"
                    "\"text\":\"q\\\"\\\\\\n\\t\\u0001\\u001f/\u007Fé😀\uFFFD\uFFFD\","
                    "\"none\":[],\"texts\":[\"\",\"b\"],\"objects\":[{},{\"x\":1.0}]}");
    EXPECT_EQ(JSONLine().text(), "{}");
    EXPECT_FALSE(JSONLine().add("x", 1e308 * 10).add("y", 1.0).text());
}

} // namespace
} // namespace tessarune
