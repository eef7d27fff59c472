#pragma once

#include "Tessarune/shell/UserDefaults.h"

#include <map>
#include <string>

namespace tessarune::simulation {

/// Settings that live as long as the test.
class MemoryDefaults : public UserDefaults {
  public:
    std::optional<SettingValue> value(std::string_view key) const override {
        const auto found = values_.find(std::string(key));
        return found == values_.end() ? std::nullopt : std::optional(found->second);
    }
    void set(std::string_view key, SettingValue value) override {
        values_[std::string(key)] = std::move(value);
    }
    void remove(std::string_view key) override { values_.erase(std::string(key)); }

  private:
    std::map<std::string, SettingValue> values_;
};

} // namespace tessarune::simulation
