#pragma once

#include "Tessarune/platform/qt-desktop/SingleInstance.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// A request to the running program. The names are also the words of the command line, of the
/// desktop entry's actions and of the bus.
enum class DesktopAction { start, stop, toggle, show, history, settings };

/// Returns `nullopt` for any other word.
std::optional<DesktopAction> desktopActionOf(std::string_view word);

/// The content of the program's command line.
struct DesktopRequest {
    std::vector<std::filesystem::path> files; ///< captioned instead of the computer's sound
    std::vector<DesktopAction> actions;
    std::optional<std::string> unknown; ///< the first unknown argument

    static DesktopRequest of(std::span<char*> arguments);
    /// The same request, with absolute paths, for a program that already runs.
    InstanceRequest forOther() const;
    bool has(DesktopAction action) const;
};

} // namespace tessarune
