#pragma once

#include <QKeySequence>
#include <QList>
#include <string_view>
#include <vector>

namespace tessarune {

/// A command of a window whose keys no setting changes. Windows take the keys from here, and the
/// settings tell which of them a user's shortcut takes away. Main thread, with the application
/// object, since the desktop has a say in some.
struct WindowKeys {
    std::string_view name;    ///< QML: `sequences: WindowKeys.NAME`
    QList<QKeySequence> keys; ///< any of these
    std::string_view title;   ///< localisation key

    static std::vector<WindowKeys> all();
    static WindowKeys of(std::string_view name);
};

} // namespace tessarune
