#include "Tessarune/ui/desktop/DesktopRequest.h"

#include <QUrl>
#include <algorithm>
#include <system_error>
#include <utility>

namespace tessarune {

namespace {

constexpr std::string_view filePrefix = "file:";
constexpr std::string_view addressPrefix = "file://";

using ActionWord = std::pair<std::string_view, DesktopAction>;
constexpr ActionWord actionWords[] = {
    {"start", DesktopAction::start},     {"stop", DesktopAction::stop},
    {"toggle", DesktopAction::toggle},   {"show", DesktopAction::show},
    {"history", DesktopAction::history}, {"settings", DesktopAction::settings},
};

/// A relative path stays relative if the working folder no longer exists. It names no file then.
std::string absolutePath(const std::filesystem::path& path) {
    std::error_code failure;
    const std::filesystem::path absolute = std::filesystem::absolute(path, failure);
    return (failure ? path : absolute).string();
}

/// The file that an argument names: as `file:PATH`, as an address, as a path with a slash, or as a
/// name without a slash. Such a name must belong to an existing file, so that a mistyped action
/// does not count as a file.
std::optional<std::filesystem::path> fileOf(std::string_view argument) {
    if (argument.starts_with(addressPrefix)) {
        const QUrl address(QString::fromUtf8(argument.data(), std::ssize(argument)));
        // A decoded address can contain a zero byte, a file name cannot.
        const QString file = address.toLocalFile();
        if (!file.isEmpty() && !file.contains(QChar::Null))
            return file.toStdString();
    }
    if (argument.starts_with(filePrefix) && argument != filePrefix)
        return argument.substr(filePrefix.size());
    std::error_code failure;
    const bool isFile = argument.find('/') != std::string_view::npos ||
                        (!argument.empty() && std::filesystem::exists(argument, failure));
    return isFile ? std::optional<std::filesystem::path>(argument) : std::nullopt;
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
        if (const auto action = desktopActionOf(argument))
            request.actions.push_back(*action);
        else if (auto file = fileOf(argument))
            request.files.push_back(std::move(*file));
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
    for (const std::filesystem::path& file : files)
        request.files.push_back(absolutePath(file));
    return request;
}

bool DesktopRequest::has(DesktopAction action) const {
    return std::ranges::find(actions, action) != actions.end();
}

} // namespace tessarune
