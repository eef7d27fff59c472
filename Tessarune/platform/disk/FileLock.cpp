#include "Tessarune/platform/disk/FileLock.h"

#include "Tessarune/platform/disk/DiskFailure.h"
#include "TessaruneCore/text/Localization.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

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
