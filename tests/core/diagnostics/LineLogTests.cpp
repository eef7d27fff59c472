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

} // namespace
} // namespace tessarune
