#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tessarune {

using SettingValue = std::variant<bool, std::int64_t, double, std::string>;

/// Seam: the store behind the settings: named plain values that outlive the program. Main queue.
///
/// A value of a kind that the caller does not expect is the caller's to judge; a key that nobody
/// knows is kept as it is.
class UserDefaults {
  public:
    virtual ~UserDefaults() = default;

    virtual std::optional<SettingValue> value(std::string_view key) const = 0;
    /// Stores at once. A store that cannot be written keeps the value for the life of the process
    /// and reports through the text log.
    virtual void set(std::string_view key, SettingValue value) = 0;
    virtual void remove(std::string_view key) = 0;

    /// Whether something may be stored under the key that cannot be had as a plain value: it is
    /// none, or the store as a whole cannot be read.
    virtual bool isUnreadable(std::string_view /*key*/) const { return false; }
    /// Calls `onChange` after each change that was made by somebody else, such as another program.
    /// There is one observer, the newest; an empty one ends it.
    virtual void observe(std::function<void()> /*onChange*/) {}
};

} // namespace tessarune
