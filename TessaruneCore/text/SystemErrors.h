#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace tessarune {

/// The category for the operating system's error numbers, for messages that a user may read. The
/// messages of common errors are in the user's language; all others are the system's own texts.
/// Compares with `std::errc` as the generic category does. Any thread.
const std::error_category& systemErrors();

/// The message for an error number.
inline std::string systemMessage(int error) {
    return systemErrors().message(error);
}

/// Returns the text `failure` with the path `known`, which the user knows, in place of `named`.
std::string naming(const std::filesystem::path& known, const std::filesystem::path& named,
                   std::string failure);

} // namespace tessarune
