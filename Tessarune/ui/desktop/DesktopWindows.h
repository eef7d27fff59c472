#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace tessarune {

/// The windows other than the caption window, for the menus, the tray, the shortcuts and the bus.
/// Each is created on first use and lives until the program ends. Main thread.
class DesktopWindows {
  public:
    enum class Kind { settings, history };

    DesktopWindows() = default;
    DesktopWindows(const DesktopWindows&) = delete;

    /// `Window` has `show(const std::string& section)`, which shows it, raised and active;
    /// `section` names the part to open and is empty for the part that was open last. `Window` may
    /// have `finishPending()`, which performs its delayed actions at once.
    template <typename Window>
    void offer(Kind kind, std::function<std::unique_ptr<Window>()> make) {
        const auto made = std::make_shared<std::unique_ptr<Window>>();
        offered_[kind] = {
            .show =
                [make = std::move(make), made](const std::string& section) {
                    if (!*made)
                        *made = make();
                    (*made)->show(section);
                },
            .finishPending =
                [made] {
                    if constexpr (requires(Window & window) { window.finishPending(); })
                        if (*made)
                            (*made)->finishPending();
                }};
    }
    /// Shows a window that was offered.
    void show(Kind kind, const std::string& section = {}) { offered_.at(kind).show(section); }
    /// Call before the program ends, because its event loop may not run again.
    void finishPending() {
        for (const auto& [kind, offered] : offered_)
            offered.finishPending();
    }

  private:
    struct Offered {
        std::function<void(const std::string& section)> show;
        std::function<void()> finishPending;
    };

    std::map<Kind, Offered> offered_;
};

} // namespace tessarune
