#include "Tessarune/session/LiveSessionControlTrigger.h"
#include "Tessarune/session/LiveSessionStateMachine.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace tessarune {
namespace {

using Phase = LiveSessionPhase;
using Machine = LiveSessionStateMachine;

/// A transition as one line: phase, flags, what it writes.
std::string described(const std::optional<LiveSessionTransition>& transition) {
    if (!transition)
        return "none";
    std::string text(name(transition->phase));
    text += transition->isListening ? " listening" : "";
    text += transition->isStarting ? " starting" : "";
    if (transition->status)
        text += " '" + transition->status->text() + "'";
    if (transition->audioLevel)
        text += *transition->audioLevel == 0.08 ? " level" : " another level";
    text += transition->discardLateStartArtifacts ? " discard" : "";
    text += transition->presentStartFailure ? " present" : "";
    return text;
}

TEST(LiveSessionStateMachineTests, EachStepFromEachPhase) {
    const std::string checking = " listening starting '正在检测系统声音'";
    const std::string saving = "stopping '正在收尾保存…' level";
    const std::string none = "none";
    struct Step {
        const char* name;
        std::function<std::optional<LiveSessionTransition>(Machine&)> take;
        // from idle, preparing, loading, listening, stopping, failed
        std::vector<std::string> expected;
    };
    const std::vector<Step> steps{
        {"beginStart",
         &Machine::beginStart,
         {"preparing" + checking, none, none, none, none, "preparing" + checking}},
        {"permissionsGranted",
         &Machine::permissionsGranted,
         {none, "loading" + checking, "loading" + checking, "loading" + checking, none, none}},
        {"transcriberReady",
         &Machine::transcriberReady,
         {"idle discard", "listening listening ''", "listening listening ''",
          "listening listening ''", "idle discard", "idle discard"}},
        {"startFailed",
         &Machine::startFailed,
         {"idle", "failed level present", "failed level present", "listening listening", "stopping",
          "failed"}},
        {"requestStop",
         [](Machine& machine) { return machine.requestStop(false); },
         {none, saving, saving, saving, none, none}},
        {"requestStop with a recording",
         [](Machine& machine) { return machine.requestStop(true); },
         {saving, saving, saving, saving, none, saving}},
        {"stopFinished", &Machine::stopFinished,
         std::vector<std::string>(6, "idle '点击开始，或按空格' level")},
    };
    for (const Step& step : steps) {
        for (int from = 0; from < 6; ++from) {
            Machine machine{static_cast<Phase>(from)};
            const auto transition = step.take(machine);
            const std::string where =
                std::string(step.name) + " from " + std::string(name(static_cast<Phase>(from)));
            EXPECT_EQ(described(transition), step.expected[static_cast<std::size_t>(from)])
                << where;
            EXPECT_EQ(machine.phase, transition ? transition->phase : static_cast<Phase>(from))
                << where;
        }
    }
}

TEST(LiveSessionControlTriggerTests, LogFieldsNameWhoAskedAndTheDetails) {
    const auto text = [](const LiveSessionControlTrigger& trigger) {
        std::string all;
        for (const auto& [key, value] : trigger.logFields()) {
            all += key + "=";
            all += std::holds_alternative<bool>(value) ? (std::get<bool>(value) ? "yes" : "no")
                                                       : std::get<std::string>(value);
            all += "; ";
        }
        return all;
    };
    using Trigger = LiveSessionControlTrigger;
    EXPECT_EQ(text(Trigger::keyboardShortcut()),
              "trigger=keyboard.shortcut.toggleRecord; triggerCategory=keyboard; "
              "triggerUserInitiated=yes; trigger.key=space; trigger.shortcut=toggleRecord; ");
    EXPECT_EQ(text(Trigger::audioInactivityTimeout(61.25, 60)),
              "trigger=audio.inactivity.timeout; triggerCategory=automatic; "
              "triggerUserInitiated=no; trigger.idleSeconds=61.250; "
              "trigger.timeoutSeconds=60.000; ");
    EXPECT_EQ(text(Trigger::pendingRestart()), "trigger=session.pendingRestart; "
                                               "triggerCategory=internal; "
                                               "triggerUserInitiated=no; ");
    EXPECT_NE(Trigger::audioInactivityTimeout(61, 60), Trigger::audioInactivityTimeout(62, 60));
}

} // namespace
} // namespace tessarune
