#pragma once

#include "Tessarune/shell/Setting.h"
#include "TessaruneCore/host/Mutex.h"
#include "TessaruneCore/observation/Observations.h"

#include <functional>
#include <memory>
#include <string>

namespace tessarune {

/// A copy of a setting's value for other threads: only the main queue may read the setting itself.
/// Main queue; the setting must outlive this object.
class SharedSetting {
  public:
    explicit SharedSetting(Setting<std::string>& setting) : copy_(std::make_shared<Copy>()) {
        const auto copyValue = [copy = copy_, &setting] {
            const MutexLock lock(copy->mutex);
            copy->value = *setting;
        };
        copyValue();
        observations_.follow(setting.published(), copyValue);
    }

    /// Returns a function that reads the current value. Any thread may call it, even after the end
    /// of this object.
    std::function<std::string()> reader() const {
        return [copy = copy_] {
            const MutexLock lock(copy->mutex);
            return copy->value;
        };
    }

  private:
    struct Copy {
        Mutex mutex;
        std::string value GUARDED_BY(mutex);
    };
    const std::shared_ptr<Copy> copy_;
    Observations observations_;
};

} // namespace tessarune
