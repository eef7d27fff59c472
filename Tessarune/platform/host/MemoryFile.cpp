#include "Tessarune/platform/host/MemoryFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace tessarune {

MemoryFile::MemoryFile(std::string_view bytes) : file_(memfd_create("tessarune", MFD_CLOEXEC)) {
    while (file_ >= 0 && !bytes.empty()) {
        const ssize_t written = write(file_, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            break;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    if (file_ >= 0 && bytes.empty())
        return;
    const int reason = errno;
    if (file_ >= 0)
        close(file_);
    throw std::system_error(reason, std::generic_category(), "memfd_create");
}

MemoryFile::~MemoryFile() {
    close(file_);
}

std::filesystem::path MemoryFile::path() const {
    return "/proc/self/fd/" + std::to_string(file_);
}

} // namespace tessarune
