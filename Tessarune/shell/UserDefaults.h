#pragma once

#include <cstdint>
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
};

} // namespace tessarune
