#pragma once

#include <filesystem>
#include <string_view>

/// What the disk refuses, thrown as std::system_error whose text a user can read: what could not be
/// done, with which file, and why. Both take the reason from `errno`. Any thread.
namespace tessarune::DiskFailure {

/// `what` is a localisation key with a "%@" for the path.
[[noreturn]] void fail(std::string_view what, const std::filesystem::path& path);

/// The same for what writes. Where the folder is read-only, the text says that and names the
/// folder: no other file in it would fare better.
[[noreturn]] void failToWrite(std::string_view what, const std::filesystem::path& path);

/// The folder of the file if nothing can be made in it; empty otherwise. Keeps `errno`.
std::filesystem::path readOnlyFolderOf(const std::filesystem::path& path);

/// Throws if nothing can be made in the folder, or in the nearest one above it that is there.
void requireWritable(std::filesystem::path folder);

} // namespace tessarune::DiskFailure
