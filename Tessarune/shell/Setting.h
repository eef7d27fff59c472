#pragma once

#include "Tessarune/shell/SettingTypes.h"
#include "Tessarune/shell/UserDefaults.h"
#include "TessaruneCore/observation/Published.h"
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
    /// The value as stored, which may be spelt differently than for a user.
    virtual SettingValue storedValue() const = 0;
    virtual std::string defaultText() const = 0;
    virtual const SettingInfo& info() const = 0;
    /// All valid texts, if there is a closed list of them; else empty.
    virtual std::vector<std::string> choices() const = 0;
    /// The valid texts, described for the user: "true or false", the choices.
    virtual std::string expected() const = 0;
    /// Whether the text is a value of this setting.
    virtual bool accepts(std::string_view text) const = 0;
    /// False, without a change, if the text is invalid.
    virtual bool setText(std::string_view text) = 0;
    /// The stored value is invalid for this setting.
    virtual bool isUnreadable() const = 0;
    /// Restores the first-launch value.
    virtual void restore() = 0;
    /// Reads the stored value again, as after a change by another program; announces it if it has
    /// changed.
    virtual void reload() = 0;
    /// Calls back after each assignment until the returned function is called. The setting outlives
    /// it.
    [[nodiscard]] virtual std::function<void()> onChange(std::function<void()> changed) const = 0;
};

/// How a value of type T is stored and written. `read` returns `nullopt` for an invalid stored
/// value; the setting then has its default or its cautious value, and the stored one stays.
template <typename T>
struct SettingCodec {
    std::function<std::optional<T>(const SettingValue&)> read;
    std::function<SettingValue(const T&)> store;
    std::function<std::optional<T>(std::string_view)> parse;
    std::function<std::string(const T&)> print;
    std::function<std::string()> expected;             ///< for the user; absent: the choices
    std::function<std::vector<std::string>()> choices; ///< absent: no closed list
    /// The value for an invalid stored one; absent: the default.
    std::optional<T> cautious = std::nullopt;
};

SettingCodec<bool> boolCodec();
SettingCodec<std::int64_t> integerCodec(std::int64_t lowest, std::int64_t highest);
SettingCodec<double> secondsCodec(double lowest, double highest);
/// A 24-bit RGB number; as text "#RRGGBB".
SettingCodec<std::int64_t> colorCodec();
SettingCodec<std::string> textCodec();

/// An enumeration that is stored as a word. Its case does not matter in hand-written files.
template <typename E>
SettingCodec<E> wordCodec(std::vector<std::pair<E, std::string>> words) {
    auto find = [words](std::string_view word) -> std::optional<E> {
        for (const auto& [value, name] : words) {
            if (name == word)
                return value;
        }
        return std::nullopt;
    };
    auto name = [words](const E& value) {
        for (const auto& [candidate, word] : words) {
            if (candidate == value)
                return word;
        }
        return std::string();
    };
    auto parse = [words](std::string_view text) -> std::optional<E> {
        for (const auto& [value, word] : words) {
            if (Text::lowercased(word) == Text::lowercased(text))
                return value;
        }
        return std::nullopt;
    };
    auto choices = [words] {
        std::vector<std::string> all;
        all.reserve(words.size());
        for (const auto& [value, word] : words)
            all.push_back(word);
        return all;
    };
    return {[find](const SettingValue& stored) {
                const auto* word = std::get_if<std::string>(&stored);
                return word ? find(*word) : std::nullopt;
            },
            [name](const E& value) -> SettingValue { return name(value); },
            parse,
            name,
            {},
            choices};
}

/// A setting: observable, and stored at once when it changes. Main queue.
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
    /// The value for observers; assign through the setting, which stores it too.
    Published<T>& published() { return value_; }
    const T& defaultValue() const { return default_; }
    /// Whether the value was chosen, even if it equals the default.
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
        return all.empty() ? codec_.expected() : Text::joined(all, ", ");
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
