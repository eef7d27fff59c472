#pragma once

#include "TessaruneCore/observation/Published.h"

#include <functional>
#include <utility>
#include <vector>

namespace tessarune {

/// The observations of an object, which end with it. Confined to one thread, like what it observes.
class Observations {
  public:
    Observations() = default;
    Observations(const Observations&) = delete;
    ~Observations() {
        for (const auto& end : endings_)
            end();
    }

    /// Calls back after each change of the value, which outlives this.
    template <typename T, typename Changed>
    void follow(const Published<T>& value, Changed changed) {
        const auto token =
            value.onDidChange([changed = std::move(changed)](const T&) { changed(); });
        endings_.push_back([&value, token] { value.remove(token); });
    }

    /// Calls back with each value that differs from the one before.
    template <typename T, typename Changed>
    void followChanges(const Published<T>& value, Changed changed) {
        const auto token = value.onDidChange(
            [changed = std::move(changed), before = *value](const T& now) mutable {
                if (std::exchange(before, now) != now)
                    changed(now);
            });
        endings_.push_back([&value, token] { value.remove(token); });
    }

    /// Runs `end` with the others.
    void add(std::function<void()> end) { endings_.push_back(std::move(end)); }

  private:
    std::vector<std::function<void()>> endings_;
};

} // namespace tessarune
