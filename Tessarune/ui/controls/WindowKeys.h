#pragma once

#include <QKeySequence>
#include <QList>
#include <string_view>
#include <vector>

namespace tessarune {

/// A command of a window with fixed keys, which no setting changes. The windows take the keys from
/// here, and the settings warn the user who gives the same keys to a shortcut. Main thread; needs
/// the application object, because some keys depend on the desktop.
struct WindowKeys {
    std::string_view name;    ///< QML: `sequences: WindowKeys.NAME`
    QList<QKeySequence> keys; ///< any of these
    std::string_view title;   ///< localisation key

    static std::vector<WindowKeys> all();
    /// `name` must be that of a command.
    static WindowKeys of(std::string_view name);
};

} // namespace tessarune
