#include "tests/diagnostics/DiagnosedSession.h"

#include <gtest/gtest.h>

namespace tessarune {
namespace {

using testing::DiagnosedSession;

/// The sentinel runs between sessions: it raises each alarm once, and a milestone per gigabyte.
TEST(IdleMemorySentinelTests, RaisesEachAlarmOnce) {
    DiagnosedSession session(DiagnosticsLevel::standard);
    session.runOne();
    const auto alarms = [&] {
        std::vector<std::string> kinds;
        for (const auto& line : session.logLines("idleMemorySentinel.alarm"))
            kinds.push_back(line["alarmKind"]);
        return kinds;
    };
    using Kinds = std::vector<std::string>;
    session.figures.cpu += 15; // within the first minute
    session.host.advanceBy(15);
    EXPECT_EQ(alarms(), Kinds{});
    session.host.advanceBy(60);
    session.figures.cpu += 15;
    session.host.advanceBy(15);
    session.figures.cpu += 15;
    session.host.advanceBy(15);
    EXPECT_EQ(alarms(), Kinds{"idleCpuHigh"});
    session.figures.used.footprintMB = 400; // over three times the baseline, but below 512
    session.host.advanceBy(15);
    EXPECT_EQ(alarms().size(), 1u);
    session.figures.used.footprintMB = 1100;
    session.host.advanceBy(15);
    EXPECT_EQ(alarms(),
              (Kinds{"idleCpuHigh", "baselineMultiple", "growthSpike", "gigabyteMilestone"}));
    session.figures.used.footprintMB = 3100;
    session.host.advanceBy(30);
    EXPECT_EQ(alarms(),
              (Kinds{"idleCpuHigh", "baselineMultiple", "growthSpike", "gigabyteMilestone",
                     "absolute", "gigabyteMilestone", "gigabyteMilestone"}));
    const auto written = session.lines("events/idle_memory_alarm.ndjson");
    EXPECT_EQ(written.size(), 7u);
    EXPECT_EQ(written.front()["windows"][0]["title"], "Captions");
    for (const char* key : {"windows", "host"}) {
        const std::string logged = session.logLines("idleMemorySentinel.alarm").front()[key];
        EXPECT_EQ(nlohmann::json::parse(logged), written.front()[key]);
    }
    session.start();
    session.host.advanceBy(1);
    session.stop();
    session.host.advanceBy(30000); // longer than the sentinel runs
    EXPECT_EQ(session.host.liveTasks(), 0u);
    // The second session ended the first sentinel; the second sentinel reached its maximal runtime.
    const auto names = session.files.list(session.paths.diagnostics());
    std::istringstream text(session.files.contentsOf(session.paths.diagnostics() / names.front() /
                                                     "events/idle_memory_sentinel.ndjson"));
    std::string last;
    for (std::string line; std::getline(text, line);)
        last = line;
    EXPECT_EQ(nlohmann::json::parse(last)["reason"], "listen.start");
    EXPECT_EQ(session.lines("events/idle_memory_sentinel.ndjson").back()["reason"], "maxRuntime");
}

} // namespace
} // namespace tessarune
