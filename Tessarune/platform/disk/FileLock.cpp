#include "Tessarune/platform/disk/FileLock.h"

#include "Tessarune/platform/disk/DiskFailure.h"
#include "Tessarune/platform/disk/Uninterrupted.h"
#include "TessaruneCore/text/Localization.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace tessarune {

namespace {

/// Tries to take the lock; returns whether it succeeded. Never waits.
bool lockNow(int file, int kind) {
    return uninterrupted([&] { return ::flock(file, kind | LOCK_NB); }) == 0;
}

int openFile(const std::filesystem::path& path, int flags) {
    constexpr mode_t privateFile = 0600;
    return uninterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC, privateFile); });
}

} // namespace

std::optional<FileLock> FileLock::tryToTake(const std::filesystem::path& path) {
    const int file = openFile(path, O_RDWR | O_CREAT);
    if (file < 0)
        DiskFailure::failToWrite(localizationKey("cannot open %@"), path);
    FileLock lock(file);
    if (lockNow(file, LOCK_EX))
        return lock;
    if (errno == EWOULDBLOCK)
        return std::nullopt;
    DiskFailure::fail(localizationKey("cannot lock %@"), path);
}

std::optional<FileLock> FileLock::waitForFolder(const std::filesystem::path& folder,
                                                double seconds) {
    using Clock = std::chrono::steady_clock;
    constexpr auto pause = std::chrono::milliseconds(2);
    const int opened = openFile(folder, O_RDONLY | O_DIRECTORY);
    if (opened < 0)
        return std::nullopt;
    FileLock lock(opened);
    const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
    while (!lockNow(opened, LOCK_EX)) {
        if (errno != EWOULDBLOCK || Clock::now() >= deadline) // some file systems have no locks
            return std::nullopt;
        std::this_thread::sleep_for(pause);
    }
    return lock;
}

bool FileLock::isTaken(const std::filesystem::path& path) {
    const int file = openFile(path, O_RDONLY | O_NONBLOCK);
    if (file < 0)
        return false;
    const FileLock opened(file);
    return !lockNow(file, LOCK_SH) && errno == EWOULDBLOCK;
}

void FileLock::note(std::string_view text) const {
    if (::ftruncate(file_, 0) == 0 &&
        ::pwrite(file_, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
        (void)!::ftruncate(file_, 0);
}

FileLock::~FileLock() {
    if (file_ >= 0)
        ::close(file_);
}

} // namespace tessarune
