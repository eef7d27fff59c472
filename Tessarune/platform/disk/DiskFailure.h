#pragma once

#include <filesystem>
#include <string_view>

/// Failures of the disk, thrown as std::system_error with a text for the user: the failed
/// operation, its file, and the reason. Both take the reason from `errno`. Any thread.
namespace tessarune::DiskFailure {

/// `what` is a localisation key with a "%@" for the path.
[[noreturn]] void fail(std::string_view what, const std::filesystem::path& path);

/// The same for a write. In a read-only folder, the text says so and names the folder: no other
/// file in it can be written either.
[[noreturn]] void failToWrite(std::string_view what, const std::filesystem::path& path);

/// The folder of the file if it is not writable; empty otherwise. Keeps `errno`.
std::filesystem::path readOnlyFolderOf(const std::filesystem::path& path);

/// Throws if the folder, or its nearest existing parent, is not writable.
void requireWritable(std::filesystem::path folder);

} // namespace tessarune::DiskFailure
