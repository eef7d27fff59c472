#include "Tessarune/session/SessionLog.h"

#include <utility>

namespace tessarune {

void SessionLog::event(const std::string& name, const LogFields& fields, Importance importance,
                       std::source_location source) {
    logger_.event(name, fields, importance, source);
}

void SessionLog::milestone(const std::string& name, const LogFields& fields, Importance importance,
                           std::source_location source) {
    event(name, fields, importance, source);
    instant(name, fields);
}

void SessionLog::instant(const std::string& name, const LogFields& fields) {
    diagnostics_.lifecycle({host_.now(), name, LifecyclePhase::instant, std::nullopt, fields});
}

SessionLog::Step SessionLog::begin(std::string name, const LogFields& fields) {
    diagnostics_.lifecycle({host_.now(), name, LifecyclePhase::start, std::nullopt, fields});
    return {std::move(name), host_.now()};
}

void SessionLog::finish(const Step& step, const LogFields& fields) {
    end(step, LifecyclePhase::finish, fields);
}

void SessionLog::fail(const Step& step, const LogFields& fields) {
    end(step, LifecyclePhase::failure, fields);
}

void SessionLog::end(const Step& step, LifecyclePhase phase, const LogFields& fields) {
    diagnostics_.lifecycle({host_.now(), step.name, phase, host_.now() - step.startedAt, fields});
}

std::int64_t SessionLog::elapsedMS(double since) const {
    return static_cast<std::int64_t>((host_.now() - since) * 1000.0);
}

LogFields SessionLog::elapsed(double since) const {
    return {{"elapsedMS", elapsedMS(since)}};
}

} // namespace tessarune
