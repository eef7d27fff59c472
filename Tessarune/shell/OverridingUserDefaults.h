#pragma once

#include "Tessarune/shell/UserDefaults.h"

#include <map>
#include <utility>

namespace tessarune {

/// A store that overrides values of another store for this run: values from a command line take
/// effect and are never stored. Main queue; the other store must outlive it.
class OverridingUserDefaults final : public UserDefaults {
  public:
    explicit OverridingUserDefaults(UserDefaults& behind) : behind_(behind) {}

    /// Gives the key this value until `endOverride`; changes of the key stay in memory.
    void override(std::string key, SettingValue value) {
        overrides_.insert_or_assign(std::move(key), std::move(value));
    }

    /// Removes the override: the key has the other store's value again.
    void endOverride(std::string_view key) {
        if (const auto found = overrides_.find(key); found != overrides_.end())
            overrides_.erase(found);
    }

    std::optional<SettingValue> value(std::string_view key) const override {
        const auto found = overrides_.find(key);
        return found != overrides_.end() ? found->second : behind_.value(key);
    }
    void set(std::string_view key, SettingValue value) override {
        const auto found = overrides_.find(key);
        if (found != overrides_.end())
            found->second = std::move(value);
        else
            behind_.set(key, std::move(value));
    }
    bool isUnreadable(std::string_view key) const override {
        return !overrides_.contains(key) && behind_.isUnreadable(key);
    }
    void observe(std::function<void()> onChange) override { behind_.observe(std::move(onChange)); }

  private:
    UserDefaults& behind_;
    std::map<std::string, SettingValue, std::less<>> overrides_;
};

} // namespace tessarune
