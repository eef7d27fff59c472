#pragma once

#include "Tessarune/shell/SettingTypes.h"
#include "Tessarune/shell/UserDefaults.h"
#include "TessaruneCore/observation/Published.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// One setting as an element of a list: a key, and a value with a text form.
class AnySetting {
  public:
    virtual ~AnySetting() = default;
    virtual std::string_view key() const = 0;
    virtual std::string text() const = 0;
    /// The value in its stored form, which may differ from its text.
    virtual SettingValue storedValue() const = 0;
    virtual std::string defaultText() const = 0;
    virtual const SettingInfo& info() const = 0;
    /// The values to choose from, as texts; empty if there is no closed list. `accepts` may also
    /// accept other spellings of them.
    virtual std::vector<std::string> choices() const = 0;
    /// Describes the valid texts to the user: lists the choices, or says "true or false" or the
    /// like.
    virtual std::string expected() const = 0;
    /// Whether the text is valid for this setting.
    virtual bool accepts(std::string_view text) const = 0;
    /// Assigns the value of the text. If the text is invalid, returns false and changes nothing.
    virtual bool setText(std::string_view text) = 0;
    /// Whether the stored value is invalid for this setting or cannot be read.
    virtual bool isUnreadable() const = 0;
    /// Assigns the default value and stores it.
    virtual void restore() = 0;
    /// Reads the stored value again, such as after a change by another program; notifies observers
    /// if it has changed.
    virtual void reload() = 0;
    /// Calls `changed` after each assignment and each change by `reload`, until the returned
    /// function is called, which must happen before the setting's end.
    [[nodiscard]] virtual std::function<void()> onChange(std::function<void()> changed) const = 0;
};

/// How a value of type T is stored, and how it is written for the user. `read` returns `nullopt`
/// for an invalid stored value; the setting then has the value `cautious` or its default, and the
/// store keeps the invalid value.
template <typename T>
struct SettingCodec {
    std::function<std::optional<T>(const SettingValue&)> read;
    std::function<SettingValue(const T&)> store;
    std::function<std::optional<T>(std::string_view)> parse;
    std::function<std::string(const T&)> print;
    std::function<std::string()> expected;             ///< for the user; only used without choices
    std::function<std::vector<std::string>()> choices; ///< empty: no closed list
    /// The value to use if the stored one is invalid or unreadable; `nullopt`: the default.
    std::optional<T> cautious = std::nullopt;
};

SettingCodec<bool> boolCodec();
SettingCodec<std::int64_t> integerCodec(std::int64_t lowest, std::int64_t highest);
SettingCodec<double> secondsCodec(double lowest, double highest);
/// A 24-bit RGB number; as text "#RRGGBB".
SettingCodec<std::int64_t> colorCodec();
SettingCodec<std::string> textCodec();

/// An enumeration that is stored by name. Case matters in a stored name, but not in a name that a
/// user types.
template <typename E>
SettingCodec<E> wordCodec(std::vector<std::pair<E, std::string>> names) {
    auto find = [names](std::string_view storedName) -> std::optional<E> {
        for (const auto& [value, name] : names) {
            if (name == storedName)
                return value;
        }
        return std::nullopt;
    };
    auto name = [names](const E& value) {
        for (const auto& [candidate, storedName] : names) {
            if (candidate == value)
                return storedName;
        }
        return std::string();
    };
    auto parse = [names](std::string_view text) -> std::optional<E> {
        for (const auto& [value, storedName] : names) {
            if (Text::lowercased(storedName) == Text::lowercased(text))
                return value;
        }
        return std::nullopt;
    };
    auto choices = [names] {
        std::vector<std::string> all;
        all.reserve(names.size());
        for (const auto& [value, storedName] : names)
            all.push_back(storedName);
        return all;
    };
    return {[find](const SettingValue& stored) {
                const auto* storedName = std::get_if<std::string>(&stored);
                return storedName ? find(*storedName) : std::nullopt;
            },
            [name](const E& value) -> SettingValue { return name(value); },
            parse,
            name,
            {},
            choices};
}

/// A setting. It is observable, and stored at once when it is assigned. Main queue.
template <typename T>
class Setting final : public AnySetting {
  public:
    Setting(UserDefaults& store, std::vector<AnySetting*>& all, std::string_view key,
            SettingInfo info, T defaultValue, SettingCodec<T> codec)
        : store_(store),
          key_(key),
          info_(info),
          default_(std::move(defaultValue)),
          codec_(std::move(codec)) {
        all.push_back(this);
        reload();
    }

    const T& operator*() const { return *value_; }
    const T* operator->() const { return value_.operator->(); }
    Setting& operator=(T value) {
        store_.set(key_, codec_.store(value));
        value_ = std::move(value);
        return *this;
    }
    /// The value for observers. Assign through the setting, which also stores it.
    Published<T>& published() { return value_; }
    const T& defaultValue() const { return default_; }
    /// Whether a value is stored, even if it equals the default.
    bool isStored() const { return store_.value(key_).has_value(); }

    std::string_view key() const override { return key_; }
    std::string text() const override { return codec_.print(*value_); }
    SettingValue storedValue() const override { return codec_.store(*value_); }
    std::string defaultText() const override { return codec_.print(default_); }
    const SettingInfo& info() const override { return info_; }
    std::vector<std::string> choices() const override {
        return codec_.choices ? codec_.choices() : std::vector<std::string>();
    }
    std::string expected() const override {
        const auto all = choices();
        return all.empty() ? codec_.expected() : Text::joined(all, localized(", "));
    }
    bool accepts(std::string_view text) const override { return codec_.parse(text).has_value(); }
    bool setText(std::string_view text) override {
        std::optional<T> value = codec_.parse(text);
        if (!value)
            return false;
        *this = std::move(*value);
        return true;
    }
    bool isUnreadable() const override {
        const std::optional<SettingValue> stored = store_.value(key_);
        return stored ? !codec_.read(*stored) : store_.isUnreadable(key_);
    }
    void restore() override { *this = default_; }
    void reload() override {
        const std::optional<SettingValue> stored = store_.value(key_);
        std::optional<T> value = stored ? codec_.read(*stored) : std::nullopt;
        if (!value)
            value = isUnreadable() ? codec_.cautious.value_or(default_) : default_;
        if (!(*value == *value_))
            value_ = std::move(*value);
    }
    std::function<void()> onChange(std::function<void()> changed) const override {
        const auto token =
            value_.onDidChange([changed = std::move(changed)](const T&) { changed(); });
        return [this, token] { value_.remove(token); };
    }

  private:
    UserDefaults& store_;
    std::string key_;
    SettingInfo info_;
    T default_;
    SettingCodec<T> codec_;
    Published<T> value_;
};

} // namespace tessarune
