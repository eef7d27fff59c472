#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tessarune {

using SettingValue = std::variant<bool, std::int64_t, double, std::string>;

/// Interface: the store behind the settings, with named plain values that outlive the program. Main
/// queue.
///
/// A value is returned with its stored type; the caller checks the type. Stored keys that this
/// version of the program does not use are kept unchanged.
class UserDefaults {
  public:
    virtual ~UserDefaults() = default;

    virtual std::optional<SettingValue> value(std::string_view key) const = 0;
    /// Stores at once. If that fails, logs the failure and keeps the value until the process ends.
    virtual void set(std::string_view key, SettingValue value) = 0;

    /// Whether something unreadable may be stored under the key: its value has an unknown type, or
    /// the entire store is unreadable.
    virtual bool isUnreadable(std::string_view /*key*/) const { return false; }
    /// Calls `onChange` after each change by another program, and possibly after changes by this
    /// one. Replaces the previous observer; an empty function only removes it.
    virtual void observe(std::function<void()> /*onChange*/) {}
};

} // namespace tessarune
