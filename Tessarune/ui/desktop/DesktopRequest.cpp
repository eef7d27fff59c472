#include "Tessarune/ui/desktop/DesktopRequest.h"

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

constexpr std::string_view filePrefix = "file:";

constexpr std::pair<std::string_view, DesktopAction> actionWords[] = {
    {"start", DesktopAction::start},     {"stop", DesktopAction::stop},
    {"toggle", DesktopAction::toggle},   {"show", DesktopAction::show},
    {"history", DesktopAction::history}, {"settings", DesktopAction::settings},
};

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
        if (argument.starts_with(filePrefix))
            request.file = std::filesystem::path(argument.substr(filePrefix.size()));
        else if (const auto action = desktopActionOf(argument))
            request.actions.push_back(*action);
        else if (request.unknown.empty())
            request.unknown = argument;
    }
    return request;
}

InstanceRequest DesktopRequest::forOther() const {
    InstanceRequest request;
    for (const auto& [word, action] : actionWords) {
        if (has(action))
            request.actions.emplace_back(word);
    }
    if (file)
        request.files.push_back(std::filesystem::absolute(*file).string());
    return request;
}

bool DesktopRequest::has(DesktopAction action) const {
    return std::ranges::find(actions, action) != actions.end();
}

} // namespace tessarune
