#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace tessarune {

/// The windows beside the captions, for the menus, the tray, the keys and the bus. Each is made
/// when it is first asked for and stays until the program ends. Main thread.
class DesktopWindows {
  public:
    enum class Kind { settings, history };

    DesktopWindows() = default;
    DesktopWindows(const DesktopWindows&) = delete;

    /// `Window` has `show(const std::string& section)`, which shows it, raised and active; the
    /// section is the part of it that is asked for, empty for where the user was.
    template <typename Window>
    void offer(Kind kind, std::function<std::unique_ptr<Window>()> make) {
        offered_[kind] = [make = std::move(make),
                          window = std::shared_ptr<Window>()](const std::string& section) mutable {
            if (!window)
                window = make();
            window->show(section);
        };
    }
    bool has(Kind kind) const { return offered_.contains(kind); }
    /// Nothing happens where the program has no such window.
    void show(Kind kind, const std::string& section = {}) {
        if (const auto offered = offered_.find(kind); offered != offered_.end())
            offered->second(section);
    }

  private:
    std::map<Kind, std::function<void(const std::string& section)>> offered_;
};

} // namespace tessarune
