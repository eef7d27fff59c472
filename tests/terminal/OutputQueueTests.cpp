#include "Terminal/OutputQueue.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <future>
#include <string>

namespace tessarune {
namespace {

TEST(OutputQueueTests, PrintingDoesNotWaitForAReaderAndALateReaderGetsEverything) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    std::promise<void> caughtUp;
    OutputQueue queue(ends[1], [&] { caughtUp.set_value(); });
    std::string printed;
    while (!queue.isBehind()) {
        const std::string line = "line " + std::to_string(printed.size()) + "\n";
        std::fputs(line.c_str(), queue.stream());
        printed += line;
    }
    EXPECT_FALSE(queue.isWritten());
    std::string read(printed.size(), '\0');
    for (std::size_t at = 0; at < read.size();) {
        const ssize_t count = ::read(ends[0], read.data() + at, read.size() - at);
        ASSERT_GT(count, 0);
        at += static_cast<std::size_t>(count);
    }
    EXPECT_EQ(read, printed);
    caughtUp.get_future().wait();
    EXPECT_TRUE(queue.isWritten());
    ::close(ends[0]);
    ::close(ends[1]);
}

} // namespace
} // namespace tessarune
