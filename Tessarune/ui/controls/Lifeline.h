#pragma once

#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/NotificationCenter.h"

#include <memory>
#include <string_view>
#include <utility>

namespace tessarune {

/// Tells a late call (a notification, progress from another thread, or a task that returns from a
/// queue) whether the object that it needs still exists. Make the lifeline a member of that object,
/// and create and destroy the object on the main thread.
template <typename T>
class Lifeline {
  public:
    /// Points to a null pointer after the object's destruction. Read it on the main thread.
    using Held = std::shared_ptr<T* const>;

    explicit Lifeline(T& object) : object_(std::make_shared<T*>(&object)) {}
    ~Lifeline() { *object_ = nullptr; }
    Lifeline(const Lifeline&) = delete;

    Held held() const { return object_; }

    /// Returns a function that calls `act(object, values…)` if the object still exists. The
    /// function must be called on the main thread.
    template <typename Act>
    auto calling(Act act) const {
        return [weak = std::weak_ptr<T* const>(object_), act = std::move(act)](auto... values) {
            if (const Held held = weak.lock(); held && *held)
                act(**held, values...);
        };
    }

    /// Like `calling`, but the returned function may be called on any thread: it posts the call to
    /// the main queue. The host must outlive the function.
    template <typename Act>
    auto posting(Host& host, Act act) const {
        return [&host, call = calling(std::move(act))](auto... values) {
            host.post([call, values...] { call(values...); });
        };
    }

    /// Calls `act(object, subject)` on the main queue after each notification called `name`, with
    /// the notification's subject, until the observation ends.
    template <typename Act>
    NotificationCenter::Observation observe(NotificationCenter& center, std::string_view name,
                                            Host& host, Act act) const {
        return center.observe(name, posting(host, std::move(act)));
    }

  private:
    const std::shared_ptr<T*> object_;
};

} // namespace tessarune
