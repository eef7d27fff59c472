#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace tessarune {

/// A value whose changes can be observed. Observers run synchronously in the order in which they
/// were added: `onWillChange` before the value changes, `onDidChange` after. Every assignment is a
/// change, even of an equal value; compare first to avoid a notification.
///
/// Confined to one thread. An observer may add and remove observers; this takes effect from the
/// next notification on. An observer must not change the value.
template <typename T>
class Published {
  public:
    using Observer = std::function<void(const T& current)>;
    using Token = std::size_t;

    Published() = default;
    explicit Published(T value) : value_(std::move(value)) {}
    Published(const Published&) = delete;

    Published& operator=(T value) {
        notify(willChange_);
        value_ = std::move(value);
        notify(didChange_);
        return *this;
    }
    Published& operator=(const Published&) = delete;

    const T& operator*() const { return value_; }
    const T* operator->() const { return &value_; }

    /// Changes the value in place, with one notification. For lists that are too long to copy.
    template <typename Change>
    void mutate(Change change) {
        notify(willChange_);
        change(value_);
        notify(didChange_);
    }

    // These are const, so that code that may only read the value can observe it, too.

    Token onWillChange(Observer observer) const { return add(willChange_, std::move(observer)); }
    Token onDidChange(Observer observer) const { return add(didChange_, std::move(observer)); }
    void remove(Token token) const {
        for (Observers* observers : {&willChange_, &didChange_})
            replace(*observers, [token](List& list) { list.erase(token); });
    }

  private:
    using List = std::map<Token, Observer>;
    /// Replaced, never modified, so that observers may be added and removed during a notification.
    using Observers = std::shared_ptr<const List>;

    template <typename Change>
    static void replace(Observers& observers, Change change) {
        List list = observers ? *observers : List();
        change(list);
        observers = list.empty() ? nullptr : std::make_shared<const List>(std::move(list));
    }
    Token add(Observers& observers, Observer observer) const {
        const Token token = nextToken_++;
        replace(observers, [&](List& list) { list.emplace(token, std::move(observer)); });
        return token;
    }
    void notify(const Observers& observers) const {
        if (!observers)
            return;
        const Observers called = observers; // NOLINT(performance-unnecessary-copy-initialization)
        for (const auto& [token, observer] : *called)
            observer(value_);
    }

    T value_{};
    mutable Observers willChange_;
    mutable Observers didChange_;
    mutable Token nextToken_ = 0;
};

} // namespace tessarune
