#pragma once

#include "TessaruneCore/observation/Published.h"

#include <functional>
#include <utility>
#include <vector>

namespace tessarune {

/// The observations that an object makes. The destructor ends them. Confined to the thread of the
/// observed values.
class Observations {
  public:
    Observations() = default;
    Observations(const Observations&) = delete;
    ~Observations() {
        for (const auto& end : endings_)
            end();
    }

    /// Calls `changed` after each change of `value`, which must outlive this.
    template <typename T, typename Changed>
    void follow(const Published<T>& value, Changed changed) {
        const auto token =
            value.onDidChange([changed = std::move(changed)](const T&) { changed(); });
        endings_.push_back([&value, token] { value.remove(token); });
    }

    /// Calls `changed` with each value that differs from the previous one.
    template <typename T, typename Changed>
    void followChanges(const Published<T>& value, Changed changed) {
        const auto token = value.onDidChange(
            [changed = std::move(changed), before = *value](const T& now) mutable {
                if (std::exchange(before, now) != now)
                    changed(now);
            });
        endings_.push_back([&value, token] { value.remove(token); });
    }

    /// The destructor will also run `end`.
    void add(std::function<void()> end) { endings_.push_back(std::move(end)); }

  private:
    std::vector<std::function<void()>> endings_;
};

} // namespace tessarune
