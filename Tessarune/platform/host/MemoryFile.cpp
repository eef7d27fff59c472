#include "Tessarune/platform/host/MemoryFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace tessarune {

MemoryFile::MemoryFile(std::string_view bytes) : file_(memfd_create("tessarune", MFD_CLOEXEC)) {
    if (file_ < 0)
        throw std::system_error(errno, std::generic_category(), "memfd_create");
    while (!bytes.empty()) {
        const ssize_t written = write(file_, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0) {
            const int reason = written < 0 ? errno : ENOSPC;
            close(file_);
            throw std::system_error(reason, std::generic_category(), "write to a memory file");
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

MemoryFile::~MemoryFile() {
    close(file_);
}

std::filesystem::path MemoryFile::path() const {
    return "/proc/self/fd/" + std::to_string(file_);
}

} // namespace tessarune
