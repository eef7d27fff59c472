#pragma once

#include <string_view>

namespace tessarune {

/// Which part of a span a line of a lifecycle log is about; an instant has no span.
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
