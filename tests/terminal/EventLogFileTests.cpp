#include "Terminal/EventLogFile.h"
#include "Terminal/RunFailure.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

namespace tessarune {
namespace {

namespace fs = std::filesystem;

TEST(EventLogFileTests, AFileIsOverwrittenOnlyOnRequestAndTheSourceNever) {
    testing::TemporaryFolder folder;
    SimulatedHost host;
    for (const char* name : {"talk.wav", "old.ndjson"})
        std::ofstream(folder / name) << name;
    fs::create_hard_link(folder / "talk.wav", folder / "same.wav");
    fs::create_directory(folder / "folder");
    const struct {
        const char* path;
        bool overwrites;
        const char* problem; ///< null: the log is written
    } cases[] = {
        {"talk.wav", true, "the sound"},
        {"same.wav", true, "the sound"},
        {"old.ndjson", false, "--overwrite"},
        {"folder", true, "irectory"},
        {"missing/new.ndjson", false, "no folder"},
        {"new.ndjson", false, nullptr},
        {"old.ndjson", true, nullptr},
        {"/dev/full", false, nullptr},
    };
    for (const auto& c : cases) {
        EventLogFile log(host, folder / c.path, c.overwrites);
        try {
            log.check(folder / "talk.wav");
            EXPECT_EQ(c.problem, nullptr) << c.path;
        } catch (const RunFailure& failure) {
            EXPECT_EQ(failure.status, ExitStatus::cannotWrite);
            ASSERT_NE(c.problem, nullptr) << c.path << ": " << failure.what();
            EXPECT_NE(std::string(failure.what()).find(c.problem), std::string::npos)
                << failure.what();
        }
    }
    EXPECT_EQ(testing::contentsOf(folder / "old.ndjson"), "old.ndjson") << "a check writes nothing";
    EXPECT_FALSE(fs::exists(folder / "new.ndjson"));

    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const std::string& name : {std::string("pipe"), std::string(300, 'x')})
        EXPECT_THROW(EventLogFile(host, folder.path() / name, false).open(), RunFailure) << name;
    EventLogFile(host, folder / "new.ndjson", false).open();
    EXPECT_FALSE(fs::exists(folder / "new.ndjson")) << "the session did not begin";
    EventLogFile old(host, folder / "old.ndjson", true);
    old.open();
    EXPECT_EQ(testing::contentsOf(folder / "old.ndjson"), "old.ndjson");
    old.begin();
    EXPECT_EQ(testing::contentsOf(folder / "old.ndjson"), "");

    EventLogFile lost(host, "/dev/full", false);
    lost.open();
    lost.begin();
    lost.append(ASREvent::partial("a", 1, 1), 1);
    EXPECT_THROW(lost.close(), RunFailure);
}

} // namespace
} // namespace tessarune
