#include "TessaruneCore/text/SystemErrors.h"

#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

namespace tessarune {

namespace {

/// In English the program shows the C library's texts, so that users can search the web for them.
constexpr std::pair<int, std::string_view> knownMessages[] = {
    {EACCES, localizationKey("Permission denied")},
    {EBUSY, localizationKey("Device or resource busy")},
    {ECONNREFUSED, localizationKey("Connection refused")},
    {EDQUOT, localizationKey("Disk quota exceeded")},
    {EEXIST, localizationKey("File exists")},
    {EFBIG, localizationKey("File too large")},
    {EINVAL, localizationKey("Invalid argument")},
    {EIO, localizationKey("Input/output error")},
    {EISDIR, localizationKey("Is a directory")},
    {ELOOP, localizationKey("Too many levels of symbolic links")},
    {EMFILE, localizationKey("Too many open files")},
    {ENAMETOOLONG, localizationKey("File name too long")},
    {ENODEV, localizationKey("No such device")},
    {ENOENT, localizationKey("No such file or directory")},
    {ENOMEM, localizationKey("Cannot allocate memory")},
    {ENOSPC, localizationKey("No space left on device")},
    {ENOTDIR, localizationKey("Not a directory")},
    {ENXIO, localizationKey("No such device or address")},
    {EPERM, localizationKey("Operation not permitted")},
    {EPIPE, localizationKey("Broken pipe")},
    {EROFS, localizationKey("Read-only file system")},
    {ESTALE, localizationKey("Stale file handle")},
    {ETIMEDOUT, localizationKey("Connection timed out")},
};

class SystemErrors final : public std::error_category {
  public:
    const char* name() const noexcept override { return "system"; }
    std::string message(int error) const override {
        const auto* known =
            std::ranges::find(knownMessages, error, [](auto& m) { return m.first; });
        return known == std::end(knownMessages) ? std::generic_category().message(error)
                                                : localized(known->second);
    }
    std::error_condition default_error_condition(int error) const noexcept override {
        return {error, std::generic_category()};
    }
};

} // namespace

const std::error_category& systemErrors() {
    static const SystemErrors instance;
    return instance;
}

std::string naming(const std::filesystem::path& known, const std::filesystem::path& named,
                   std::string failure) {
    const std::size_t at = failure.find(named.string());
    if (!named.empty() && at != std::string::npos)
        failure.replace(at, named.string().size(), known.string());
    return failure;
}

} // namespace tessarune
