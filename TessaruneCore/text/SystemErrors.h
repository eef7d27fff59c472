#pragma once

#include <string>
#include <system_error>

namespace tessarune {

/// The category for error numbers of the operating system whose messages a user may read: common
/// ones are in the user's language, all others are the system's texts. Compares with `std::errc` as
/// the generic category does. Any thread.
const std::error_category& systemErrors();

/// The message for an error number.
inline std::string systemMessage(int error) {
    return systemErrors().message(error);
}

} // namespace tessarune
