#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// The name of a file that `FileSystem::writeAtomically` has not finished:
/// "<name>.new-<process><serial>", with six digits for the serial.
struct UnfinishedWrite {
    std::string_view name; ///< of the file to be replaced; a part of the parsed text
    int process = 0;

    /// `nullopt` if the name has another form.
    static std::optional<UnfinishedWrite> parse(std::string_view name);
    /// What is added to the name. The serial must be below 1,000,000.
    static std::string suffix(int process, unsigned serial);
};

} // namespace tessarune
