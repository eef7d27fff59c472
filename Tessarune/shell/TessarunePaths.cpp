#include "Tessarune/shell/TessarunePaths.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace tessarune {

namespace {

/// HOME or, if it is not set, the home folder of the account: services and scheduled jobs may start
/// without HOME.
std::filesystem::path homeFolder() {
    const char* home = std::getenv("HOME");
    if (home && *home)
        return home;
    const passwd* const user = ::getpwuid(::getuid());
    return user && user->pw_dir && *user->pw_dir ? user->pw_dir : "/";
}

/// The folder that an XDG variable names, or the default. XDG asks to ignore a relative path.
std::filesystem::path userFolder(const char* variable, const char* belowHome) {
    if (const char* value = std::getenv(variable)) {
        std::filesystem::path path(value);
        if (path.is_absolute())
            return path;
    }
    return homeFolder() / belowHome;
}

} // namespace

std::filesystem::path TessarunePaths::appSupportBase() const {
    if (appSupportBaseOverride)
        return *appSupportBaseOverride;
    return userFolder("XDG_DATA_HOME", ".local/share") / "Tessarune";
}

std::optional<std::filesystem::path> TessarunePaths::debugLog() {
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    if (!folder || !std::filesystem::path(folder).is_absolute())
        return std::nullopt;
    return std::filesystem::path(folder) / "tessarune.log";
}

std::filesystem::path TessarunePaths::settingsFile() {
    return userFolder("XDG_CONFIG_HOME", ".config") / "Tessarune" / "settings.json";
}

} // namespace tessarune
