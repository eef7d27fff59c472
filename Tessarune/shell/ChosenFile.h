#pragma once

#include <filesystem>
#include <string>

/// Checks of a path that the user chose for writing. They only look at the disk; errors count as
/// "no". Any thread.
namespace tessarune::ChosenFile {

/// If `path` is a link to an ordinary file, returns that file, so that a write replaces the file
/// and not the link. Otherwise returns `path`.
std::filesystem::path followingLink(const std::filesystem::path& path);

/// Whether `path` is below `folder` once links are followed. The path need not exist.
bool isBelow(const std::filesystem::path& folder, const std::filesystem::path& path);
/// Says that `path` cannot be written because it is in the program's own folder.
std::string isOwnProblem(const std::filesystem::path& path);

} // namespace tessarune::ChosenFile
