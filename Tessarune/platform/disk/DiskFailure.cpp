#include "Tessarune/platform/disk/DiskFailure.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/SystemErrors.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace tessarune::DiskFailure {

namespace {

constexpr std::string_view readOnlyKey = localizationKey("the folder %@ is read-only");

bool isRefusal(int error) {
    return error == EACCES || error == EPERM || error == EROFS;
}

} // namespace

void fail(std::string_view what, const std::filesystem::path& path) {
    throw std::system_error(errno, systemErrors(), localized(what, {path.string()}));
}

void failToWrite(std::string_view what, const std::filesystem::path& path) {
    const std::filesystem::path folder = isRefusal(errno) ? readOnlyFolderOf(path) : "";
    if (folder.empty())
        fail(what, path);
    fail(readOnlyKey, folder);
}

std::filesystem::path readOnlyFolderOf(const std::filesystem::path& path) {
    const int savedError = errno;
    const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
    const bool isReadOnly =
        ::faccessat(AT_FDCWD, folder.c_str(), W_OK, AT_EACCESS) != 0 && isRefusal(errno);
    errno = savedError;
    return isReadOnly ? folder : std::filesystem::path();
}

void requireWritable(std::filesystem::path folder) {
    std::error_code ignored;
    while (folder.has_relative_path() && !std::filesystem::exists(folder, ignored))
        folder = folder.parent_path();
    if (!readOnlyFolderOf(folder / "any").empty()) {
        errno = EACCES;
        fail(readOnlyKey, folder);
    }
}

} // namespace tessarune::DiskFailure
