#pragma once

#include "TessaruneCore/UUID.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace tessarune {

/// The subject of a notification: none, a recording, or a file or folder.
using NotificationObject = std::variant<std::monostate, UUID, std::filesystem::path>;

/// Delivers named notifications to all observers of that name, so that senders and receivers need
/// not know each other.
///
/// Any thread may post and observe. Handlers run on the posting thread before `post` returns, in
/// the order in which they were added. A handler may add and remove observations and may post. An
/// `Observation` may outlive the center.
class NotificationCenter {
  public:
    using Handler = std::function<void(const NotificationObject&)>;

    /// Owns a registration; its destructor removes the handler. A `post` that began before, on any
    /// thread, may still call the handler afterwards.
    class [[nodiscard]] Observation {
      public:
        Observation() = default;
        Observation(Observation&&) noexcept = default;
        Observation& operator=(Observation&& other) noexcept {
            end();
            observers_ = std::exchange(other.observers_, {});
            key_ = std::move(other.key_);
            return *this;
        }
        ~Observation() { end(); }

        void end();

      private:
        friend class NotificationCenter;
        struct Observers;
        std::weak_ptr<Observers> observers_;
        std::pair<std::string, std::size_t> key_;
    };

    NotificationCenter();
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    Observation observe(std::string_view name, Handler handler);
    void post(std::string_view name, const NotificationObject& object = {}) const;

  private:
    std::shared_ptr<Observation::Observers> observers_;
};

} // namespace tessarune
