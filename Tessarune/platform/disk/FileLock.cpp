#include "Tessarune/platform/disk/FileLock.h"

#include "Tessarune/platform/disk/DiskFailure.h"
#include "TessaruneCore/text/Localization.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace tessarune {

std::optional<FileLock> FileLock::tryToTake(const std::filesystem::path& path) {
    const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0)
        DiskFailure::failToWrite(localizationKey("cannot open %@"), path);
    FileLock lock(file);
    if (::flock(file, LOCK_EX | LOCK_NB) == 0)
        return lock;
    if (errno == EWOULDBLOCK || errno == EINTR)
        return std::nullopt;
    DiskFailure::fail(localizationKey("cannot lock %@"), path);
}

std::optional<FileLock> FileLock::waitForFolder(const std::filesystem::path& folder,
                                                double seconds) {
    using Clock = std::chrono::steady_clock;
    constexpr auto pause = std::chrono::milliseconds(2);
    const int opened = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0)
        return std::nullopt;
    FileLock lock(opened);
    const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
    while (::flock(opened, LOCK_EX | LOCK_NB) != 0) {
        if (Clock::now() >= deadline)
            return std::nullopt;
        std::this_thread::sleep_for(pause);
    }
    return lock;
}

bool FileLock::isTaken(const std::filesystem::path& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return false;
    const FileLock opened(file);
    return ::flock(file, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
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
