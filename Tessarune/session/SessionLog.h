#pragma once

#include "Tessarune/session/SessionDiagnostics.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "TessaruneCore/host/Host.h"

#include <cstdint>
#include <source_location>
#include <string>

namespace tessarune {

/// Logs the events of a session to the runtime log and, while a diagnostics run is open, to its
/// lifecycle log. Main queue. All references must outlive it.
class SessionLog {
  public:
    /// A step of the session, with a start and an end in the run's lifecycle log.
    struct Step {
        std::string name;
        double startedAt = 0;
    };

    SessionLog(Host& host, TessaruneFileLogger& logger, SessionDiagnostics& diagnostics)
        : host_(host), logger_(logger), diagnostics_(diagnostics) {}

    /// Writes to the runtime log.
    void event(const std::string& name, const LogFields& fields = {},
               Importance importance = Importance::routine,
               std::source_location source = std::source_location::current());
    /// Writes an event to the runtime log and to the run's lifecycle log, there as an instant: an
    /// event without a duration.
    void milestone(const std::string& name, const LogFields& fields,
                   Importance importance = Importance::routine,
                   std::source_location source = std::source_location::current());
    /// Writes an instant to the run's lifecycle log only.
    void instant(const std::string& name, const LogFields& fields);

    Step begin(std::string name, const LogFields& fields = {});
    void finish(const Step& step, const LogFields& fields = {});
    void fail(const Step& step, const LogFields& fields);

    /// The field "elapsedMS": the milliseconds since a time of the host's clock.
    LogFields elapsed(double since) const;
    std::int64_t elapsedMS(double since) const;

  private:
    void end(const Step& step, LifecyclePhase phase, const LogFields& fields);

    Host& host_;
    TessaruneFileLogger& logger_;
    SessionDiagnostics& diagnostics_;
};

} // namespace tessarune
