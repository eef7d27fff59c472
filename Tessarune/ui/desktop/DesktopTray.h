#pragma once

#include "Tessarune/session/SessionView.h"
#include "TessaruneCore/observation/Observations.h"

#include <QAction>
#include <QMenu>
#include <QSystemTrayIcon>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace tessarune {

/// The program's item in the desktop's tray, with a menu. Create it only when there is a tray. Main
/// thread; session and `waiting` must outlive it.
class DesktopTray {
  public:
    struct Commands {
        std::function<void()> toggleListening;
        std::function<void()> toggleWindow;
        std::function<bool()> isWindowVisible;
        std::function<void()> copyCaptions;
        std::function<void()> showHistory;
        std::function<void()> showSettings;
        std::function<void()> showAbout;
        std::function<void()> quit;
    };

    /// `waiting`: see CaptionWindowEnvironment. The picture "MenuBarIcon.png" in `pictures`, if it
    /// exists, is used for the item.
    DesktopTray(const SessionView& session, const Published<std::optional<std::string>>& waiting,
                const std::filesystem::path& pictures, Commands commands);
    DesktopTray(const DesktopTray&) = delete;

    /// Call when the caption window was shown or hidden.
    void update();
    /// May be called from the item's own menu, because it does not destroy the menu.
    void hide() { item_.hide(); }

  private:
    void addEntries();
    QString toolTip() const;

    const SessionView& session_;
    const Published<std::optional<std::string>>& waiting_;
    const Commands commands_;
    QMenu menu_;
    QAction* toggleListening_ = nullptr; // this and the next two: owned by the menu
    QAction* toggleWindow_ = nullptr;
    QAction* copy_ = nullptr;
    QSystemTrayIcon item_;
    Observations observations_;
};

} // namespace tessarune
