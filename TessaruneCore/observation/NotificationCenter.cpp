#include "TessaruneCore/observation/NotificationCenter.h"

#include "TessaruneCore/host/Mutex.h"

#include <map>
#include <vector>

namespace tessarune {

struct NotificationCenter::Observation::Observers {
    using Key = std::pair<std::string, std::size_t>;
    Mutex mutex;
    std::size_t next GUARDED_BY(mutex) = 0;
    std::map<Key, std::shared_ptr<const Handler>> handlers GUARDED_BY(mutex);
};

NotificationCenter::NotificationCenter() : observers_(std::make_shared<Observation::Observers>()) {}

void NotificationCenter::Observation::end() {
    const auto observers = std::exchange(observers_, {}).lock();
    if (!observers)
        return;
    std::shared_ptr<const Handler> released; // its captures are destroyed outside the lock
    const MutexLock lock(observers->mutex);
    if (auto node = observers->handlers.extract(key_))
        released = std::move(node.mapped());
}

NotificationCenter::Observation NotificationCenter::observe(std::string_view name,
                                                            Handler handler) {
    Observation observation;
    observation.observers_ = observers_;
    const MutexLock lock(observers_->mutex);
    observation.key_ = {std::string(name), observers_->next++};
    observers_->handlers.emplace(observation.key_,
                                 std::make_shared<const Handler>(std::move(handler)));
    return observation;
}

void NotificationCenter::post(std::string_view name, const NotificationObject& object) const {
    std::vector<std::shared_ptr<const Handler>> called;
    {
        const MutexLock lock(observers_->mutex);
        auto at = observers_->handlers.lower_bound({std::string(name), 0});
        for (; at != observers_->handlers.end() && at->first.first == name; ++at)
            called.push_back(at->second);
    }
    for (const auto& handler : called)
        (*handler)(object);
}

} // namespace tessarune
