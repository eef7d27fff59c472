#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace tessarune {

/// The windows besides the captions, for the menus, the tray, the keys and the bus. Each is created
/// on first use and lives until the program ends. Main thread.
class DesktopWindows {
  public:
    enum class Kind { settings, history };

    DesktopWindows() = default;
    DesktopWindows(const DesktopWindows&) = delete;

    /// `Window` has `show(const std::string& section)`, which shows it, raised and active; the
    /// section is the part of it that is asked for, empty for where the user was. It may have
    /// `finishPending()`, which does now what it would do after a while.
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
    bool has(Kind kind) const { return offered_.contains(kind); }
    /// Does nothing if the program has no such window.
    void show(Kind kind, const std::string& section = {}) {
        if (const auto offered = offered_.find(kind); offered != offered_.end())
            offered->second.show(section);
    }
    /// Before the program ends, perhaps without another turn of its event loop.
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
