#include "Tessarune/platform/disk/DataFolderLock.h"
#include "Tessarune/platform/disk/DiskFailure.h"
#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "tests/simulation/FaultyFileSystem.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <sstream>

namespace {

int interruptions = 0; ///< how many of the next calls a signal interrupts

int callUnlessInterrupted(long call, int file, int operation) {
    if (interruptions == 0)
        return static_cast<int>(::syscall(call, file, operation));
    --interruptions;
    errno = EINTR;
    return -1;
}

} // namespace

// These two functions replace those of the C library, so that a test can make their calls fail with
// EINTR.
extern "C" int flock(int file, int operation) noexcept {
    return callUnlessInterrupted(SYS_flock, file, operation);
}
extern "C" int fsync(int file) {
    return callUnlessInterrupted(SYS_fsync, file, 0);
}

namespace tessarune {
namespace {

/// The results of a series of disk operations, one line each.
std::string answers(FileSystem& disk, const std::filesystem::path& base) {
    std::string log;
    const auto note = [&](const std::string& what) { log += what + "\n"; };
    const auto attempt = [&](const char* name, const std::function<void()>& operation) {
        try {
            operation();
            note(std::string(name) + " done");
        } catch (const std::system_error& error) {
            note(std::string(name) + " " + std::string(error.code().message()));
        }
    };
    const auto file = base / "a" / "file";
    attempt("write without folder", [&] { disk.writeAtomically(file, "x"); });
    attempt("create without folder", [&] { disk.create(file); });
    attempt("read missing", [&] { disk.read(file); });
    attempt("size missing", [&] { disk.size(file); });
    disk.createDirectories(base / "a" / "b");
    attempt("folder again", [&] { disk.createDirectories(base / "a" / "b"); });
    attempt("read folder", [&] { disk.read(base / "a"); });
    const auto open = disk.create(file);
    open->append("0123456789");
    open->overwrite(2, "ab");
    open->append("x");
    open->appendZeros(3);
    open->synchronize();
    note(disk.read(file) + " " + std::to_string(disk.size(file)));
    note(disk.read(file, 9, 5) + "|" + disk.read(file, 20, 5) + "|" + disk.read(file, 1, 2));
    disk.openForAppending(file)->append("end");
    disk.writeAtomically(base / "a" / "c", "old");
    disk.writeAtomically(base / "a" / "c", "new");
    attempt("folder over file", [&] { disk.createDirectories(file / "x"); });
    disk.rename(file, base / "a" / "d");
    attempt("rename missing", [&] { disk.rename(file, base / "x"); });
    for (const auto& name : disk.list(base / "a"))
        note(name + (disk.isDirectory(base / "a" / name) ? "/" : ""));
    note(disk.read(base / "a" / "c") + " " + disk.read(base / "a" / "d"));
    note(disk.remove(base / "a") ? "removed" : "nothing");
    note(disk.remove(base / "a") ? "removed" : "nothing");
    note(std::to_string(disk.list(base / "a").size()) + (disk.exists(file) ? "there" : "gone"));
    return log;
}

TEST(PosixFileSystemTests, BehavesLikeTheSimulatedDisk) {
    const testing::TemporaryFolder folder;
    PosixFileSystem real;
    simulation::FaultyFileSystem simulated;
    simulated.createDirectories("/data");
    const std::string expected = answers(simulated, "/data");
    EXPECT_EQ(answers(real, folder.path()), expected);
    EXPECT_NE(expected.find(std::string("01ab456789x\0\0\0 14", 17)), std::string::npos);
}

TEST(PosixFileSystemTests, FilesAndFoldersAreAccessibleToTheUserOnly) {
    const testing::TemporaryFolder folder;
    const mode_t before = ::umask(0);
    PosixFileSystem disk;
    const TessarunePaths paths{folder / "share" / "data"};
    const auto lock = DataFolderLock::take(paths, "test");
    disk.createDirectories(paths.recordings());
    disk.writeAtomically(paths.recordingIndex(), "[]");
    disk.create(paths.recordings() / "a.wav");
    disk.openForAppending(paths.recordings() / "b.ndjson");
    ::umask(before);
    int count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
        using std::filesystem::perms;
        EXPECT_EQ(entry.status().permissions() & (perms::group_all | perms::others_all),
                  perms::none)
            << entry.path();
        ++count;
    }
    EXPECT_EQ(count, 7) << "three folders, the lock, the index and two recordings";
}

TEST(PosixFileSystemTests, APipeOrADeviceInPlaceOfAFileIsReadAsEmpty) {
    const testing::TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(PosixFileSystem().read(folder / "pipe"), "");
    EXPECT_EQ(PosixFileSystem().read("/dev/zero"), "");
}

TEST(PosixFileSystemTests, AReadOnlyFolderIsReportedAsReadOnly) {
    const testing::TemporaryFolder folder;
    const std::filesystem::path locked = folder / "locked";
    PosixFileSystem disk;
    disk.createDirectories(locked);
    disk.writeAtomically(locked / "old", "");
    using std::filesystem::perms;
    std::filesystem::permissions(folder.path(), perms(0711));
    std::filesystem::permissions(locked, perms(0555));
    const uid_t user = ::geteuid();
    constexpr uid_t nobody = 65534;
    ASSERT_TRUE(user != 0 || ::seteuid(nobody) == 0) << "root cannot become another user";
    const std::function<void()> writes[] = {
        [&] { disk.writeAtomically(locked / "new", ""); },
        [&] { disk.create(locked / "new"); },
        [&] { disk.createDirectories(locked / "new"); },
        [&] { disk.remove(locked / "old"); },
        [&] { DataFolderLock::take(TessarunePaths{locked}, "test"); },
        [&] { DiskFailure::requireWritable(locked / "Models" / "speech"); },
    };
    std::string said;
    for (const auto& write : writes) {
        try {
            write();
        } catch (const std::system_error& error) {
            said += std::string(error.what()) + "\n";
        }
    }
    ASSERT_TRUE(user != 0 || ::seteuid(user) == 0);
    std::filesystem::permissions(locked, perms::owner_all);
    const std::string line = "the folder " + locked.string() + " is read-only: Permission denied\n";
    EXPECT_EQ(said, line + line + line + line + line + line);
}

TEST(PosixFileSystemTests, RemovesWhatAKilledProcessLeftUnfinished) {
    const testing::TemporaryFolder folder;
    const pid_t killed = ::fork();
    if (killed == 0)
        ::_exit(0);
    ::waitpid(killed, nullptr, 0);
    PosixFileSystem disk;
    const std::string left = "a.json.new-" + std::to_string(killed) + "000001";
    const std::string running = "a.json.new-" + std::to_string(::getpid()) + "000001";
    for (const std::string& name : {left, running, "b" + left, left + "x"})
        disk.create(folder.path() / name);
    PosixFileSystem::removeUnfinished(folder.path(),
                                      [](std::string_view name) { return name == "a.json"; });
    std::vector<std::string> expected{"b" + left, running, left + "x"};
    std::ranges::sort(expected);
    EXPECT_EQ(disk.list(folder.path()), expected);
}

TEST(PosixFileSystemTests, TruncatesFilesAndFollowsNoLink) {
    testing::TemporaryFolder folder;
    PosixFileSystem files;
    files.writeAtomically(folder / "log", "old");
    std::filesystem::create_symlink(folder / "log", folder / "link");
    EXPECT_THROW(files.truncate(folder / "link", 0), std::system_error);
    EXPECT_EQ(files.read(folder / "log"), "old");
    files.truncate(folder / "log", 1);
    files.truncate(folder / "absent", 0);
    EXPECT_EQ(files.read(folder / "log"), "o");
    EXPECT_FALSE(files.exists(folder / "absent"));
}

TEST(PosixFileSystemTests, TwoProgramsMayAppendLinesToOneLog) {
    const testing::TemporaryFolder folder;
    constexpr int lines = 500;
    const auto write = [&](char letter) {
        PosixFileSystem disk;
        const auto log = disk.openForAppending(folder / "log");
        for (int i = 0; i < lines; ++i)
            log->append(std::string(40, letter) + "\n");
    };
    const pid_t child = ::fork();
    if (child == 0) {
        write('b');
        ::_exit(0);
    }
    write('a');
    ::waitpid(child, nullptr, 0);
    std::istringstream all(PosixFileSystem().read(folder / "log"));
    int whole = 0;
    for (std::string line; std::getline(all, line);)
        whole += line == std::string(40, 'a') || line == std::string(40, 'b') ? 1 : 0;
    EXPECT_EQ(whole, 2 * lines);
}

TEST(PosixFileSystemTests, CallsThatASignalInterruptsAreRepeated) {
    const testing::TemporaryFolder folder;
    interruptions = 2;
    const auto lock = FileLock::tryToTake(folder / "lock");
    EXPECT_TRUE(lock);
    interruptions = 2;
    EXPECT_TRUE(FileLock::isTaken(folder / "lock"));
    interruptions = 2;
    EXPECT_NO_THROW(PosixFileSystem().writeAtomically(folder / "file", "x"));
    EXPECT_EQ(interruptions, 0);
}

TEST(DataFolderLockTests, OneProcessAtATimeWritesAFolder) {
    const testing::TemporaryFolder folder;
    const TessarunePaths paths{folder / "data"};
    int toChild[2], toParent[2];
    ASSERT_TRUE(::pipe(toChild) == 0 && ::pipe(toParent) == 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const auto lock = DataFolderLock::take(paths, "first");
        char byte = std::holds_alternative<DataFolderLock>(lock) ? 'y' : 'n';
        (void)!::write(toParent[1], &byte, 1);
        (void)!::read(toChild[0], &byte, 1);
        ::_exit(0); // no destructor runs, as in a killed process
    }
    char byte = 0;
    ASSERT_EQ(::read(toParent[0], &byte, 1), 1);
    EXPECT_EQ(byte, 'y');
    const auto refused = DataFolderLock::take(paths, "second");
    ASSERT_TRUE(std::holds_alternative<DataFolderLock::Holder>(refused));
    EXPECT_EQ(DataFolderLock::holder(paths), std::get<DataFolderLock::Holder>(refused));
    EXPECT_EQ(std::get<DataFolderLock::Holder>(refused), (DataFolderLock::Holder{child, "first"}));
    EXPECT_EQ(DataFolderLock::holder(paths)->text(),
              "first (process " + std::to_string(child) + ")");
    std::filesystem::resize_file(paths.lock(), 0);
    EXPECT_EQ(DataFolderLock::holder(paths)->text(), "Another program");
    ASSERT_EQ(::write(toChild[1], &byte, 1), 1);
    ::waitpid(child, nullptr, 0);
    EXPECT_FALSE(DataFolderLock::holder(paths));
    EXPECT_TRUE(std::holds_alternative<DataFolderLock>(DataFolderLock::take(paths, "second")));
}

} // namespace
} // namespace tessarune
