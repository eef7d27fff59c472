#pragma once

#include <string_view>

namespace tessarune {

/// What a line of a lifecycle log reports: an instant, or the start, the finish or the failure of a
/// span.
enum class LifecyclePhase { instant, start, finish, failure };

constexpr std::string_view name(LifecyclePhase phase) {
    switch (phase) {
    case LifecyclePhase::instant:
        return "instant";
    case LifecyclePhase::start:
        return "start";
    case LifecyclePhase::finish:
        return "finish";
    case LifecyclePhase::failure:
        return "failure";
    }
    return {};
}

} // namespace tessarune
