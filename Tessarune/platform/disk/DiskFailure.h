#pragma once

#include <filesystem>
#include <string_view>

/// Failures of the disk, thrown as std::system_error with a text for the user: the failed
/// operation, its file, and the reason from `errno`. Any thread.
namespace tessarune::DiskFailure {

/// Throws. `what` is a localisation key with a "%@" for the path.
[[noreturn]] void fail(std::string_view what, const std::filesystem::path& path);

/// Throws after a failed write. If the file's folder is read-only, the text names the folder
/// instead of the file, because no other file in it can be written either.
[[noreturn]] void failToWrite(std::string_view what, const std::filesystem::path& path);

/// Returns the file's folder if the folder is not writable, otherwise an empty path. Keeps `errno`.
std::filesystem::path readOnlyFolderOf(const std::filesystem::path& path);

/// Throws if the folder is not writable. If the folder is missing, checks its nearest existing
/// parent instead.
void requireWritable(std::filesystem::path folder);

} // namespace tessarune::DiskFailure
