#pragma once

#include "Tessarune/shell/UserDefaults.h"

#include <map>

namespace tessarune::testing {

/// Settings that last as long as the test.
class MemoryUserDefaults : public UserDefaults {
  public:
    std::optional<SettingValue> value(std::string_view key) const override {
        const auto found = values_.find(key);
        return found == values_.end() ? std::nullopt : std::optional(found->second);
    }
    void set(std::string_view key, SettingValue value) override {
        values_.insert_or_assign(std::string(key), std::move(value));
    }

  private:
    std::map<std::string, SettingValue, std::less<>> values_;
};

} // namespace tessarune::testing
