#include "Tessarune/ui/desktop/DesktopRequest.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace tessarune {

namespace {

constexpr std::string_view filePrefix = "file:";

using ActionWord = std::pair<std::string_view, DesktopAction>;
constexpr ActionWord actionWords[] = {
    {"start", DesktopAction::start},     {"stop", DesktopAction::stop},
    {"toggle", DesktopAction::toggle},   {"show", DesktopAction::show},
    {"history", DesktopAction::history}, {"settings", DesktopAction::settings},
};

/// Returns the path unchanged if the working folder no longer exists: the path is then invalid here
/// and in the other program.
std::string absolutePath(const std::filesystem::path& path) {
    std::error_code failure;
    const std::filesystem::path absolute = std::filesystem::absolute(path, failure);
    return (failure ? path : absolute).string();
}

} // namespace

std::optional<DesktopAction> desktopActionOf(std::string_view word) {
    for (const auto& [known, action] : actionWords) {
        if (known == word)
            return action;
    }
    return std::nullopt;
}

DesktopRequest DesktopRequest::of(std::span<char*> arguments) {
    DesktopRequest request;
    for (const std::string_view argument : arguments) {
        if (argument.starts_with(filePrefix) && argument != filePrefix)
            request.file = std::filesystem::path(argument.substr(filePrefix.size()));
        else if (const auto action = desktopActionOf(argument))
            request.actions.push_back(*action);
        else if (!request.unknown)
            request.unknown = argument;
    }
    return request;
}

InstanceRequest DesktopRequest::forOther() const {
    InstanceRequest request;
    for (const DesktopAction action : actions) {
        const auto* const named = std::ranges::find(actionWords, action, &ActionWord::second);
        request.actions.emplace_back(named->first);
    }
    if (file)
        request.files.push_back(absolutePath(*file));
    return request;
}

bool DesktopRequest::has(DesktopAction action) const {
    return std::ranges::find(actions, action) != actions.end();
}

} // namespace tessarune
