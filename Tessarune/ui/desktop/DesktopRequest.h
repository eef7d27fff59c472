#pragma once

#include "Tessarune/platform/qt-desktop/SingleInstance.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// A request to the running program. The words are those of the command line, of the desktop
/// entry's actions and of the bus.
enum class DesktopAction { start, stop, toggle, show, history, settings };

std::optional<DesktopAction> desktopActionOf(std::string_view word);

/// What the program was started with.
struct DesktopRequest {
    std::optional<std::filesystem::path> file; ///< heard instead of what the computer plays
    std::vector<DesktopAction> actions;
    std::string unknown; ///< the first word that means nothing; empty: there is none

    static DesktopRequest of(std::span<char*> arguments);
    /// The same request for an instance that already runs.
    InstanceRequest forOther() const;
    bool has(DesktopAction action) const;
};

} // namespace tessarune
