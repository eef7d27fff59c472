#include "TessaruneCore/diagnostics/LineLogWriter.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

namespace tessarune {
using testing::contentsOf;
using testing::TemporaryFolder;

namespace {

LineLogWriter::Encode line(std::string text) {
    return [text = std::move(text)] { return text; };
}

TEST(LineLogWriterTests, AFullDiskLosesLinesAndReportsTheLoss) {
    SimulatedHost host;
    auto writer = LineLogWriter::open(host, "test", "/dev/full");
    ASSERT_TRUE(writer);
    writer->append(line("lost"));
    writer->close();
    EXPECT_TRUE(writer->hasLostLines());
    EXPECT_EQ(writer->writeError(), ENOSPC);
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
    small.rlim_cur = 9; // "whole", its line feed and "cut"
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    writer->append(line("cut short"));
    writer->append(line("lost"));
    host.runUntilIdle();
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);

    writer->append(line("whole again"));
    writer->append([] { return std::nullopt; }); // cannot be encoded
    writer->append(line("and again"));
    writer->close();
    EXPECT_EQ(contentsOf(folder / "log"), "whole\ncut\nwhole again\nand again\n");
}

TEST(LineLogWriterTests, AStalledReaderDoesNotBlockCloseAndALogIsPrivate) {
    TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const int reader = ::open((folder / "pipe").c_str(), O_RDONLY | O_NONBLOCK);
    SimulatedHost host;
    const auto pipe = LineLogWriter::open(host, "test", folder / "pipe");
    ASSERT_TRUE(pipe);
    for (std::size_t i = 0; i < LineLogWriter::maximumQueued; ++i)
        pipe->append(line(std::string(100, 'x')));
    EXPECT_FALSE(pipe->hasLostLines());
    pipe->append(line("one too many"));
    EXPECT_TRUE(pipe->hasLostLines());
    pipe->close(); // the pipe holds only 64 KiB of the queued lines
    ::close(reader);

    LineLogWriter::open(host, "test", folder / "log");
    EXPECT_EQ(std::filesystem::status(folder / "log").permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

} // namespace
} // namespace tessarune
