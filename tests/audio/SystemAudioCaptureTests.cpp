#include "Tessarune/audio/SystemAudioCapture.h"
#include "tests/simulation/ScriptedSoundServer.h"
#include "tests/simulation/WorkingHost.h"
#include "tests/support/Await.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace tessarune {
namespace {

using testing::ScriptedSoundServer;
using Kind = CaptureEvent::Kind;

class Listener final : public SystemAudioCaptureDelegate {
  public:
    explicit Listener(SimulatedHost& host) : host_(host) {}
    void systemAudioCapture(SystemAudioCapture&, AudioBufferPtr buffer) override {
        EXPECT_FALSE(host_.isOnMainQueue());
        buffers.push_back(buffer);
    }
    void systemAudioCaptureDidMeasure(SystemAudioCapture&, double level) override {
        levels.emplace_back(buffers.size(), level);
    }
    void systemAudioCaptureDidStaySilent(SystemAudioCapture&) override {
        EXPECT_TRUE(host_.isOnMainQueue());
        silentAt.push_back(host_.now());
    }
    void systemAudioCaptureDidChange(SystemAudioCapture&, const CaptureEvent& event) override {
        events.push_back(event);
        eventsAfter.push_back(buffers.size());
    }

    std::vector<AudioBufferPtr> buffers;
    std::vector<std::pair<std::size_t, double>> levels; // with the number of buffers before each
    std::vector<double> silentAt;
    std::vector<CaptureEvent> events;
    std::vector<std::size_t> eventsAfter; // the number of buffers before each event

  private:
    SimulatedHost& host_;
};

class SystemAudioCaptureTests : public ::testing::Test {
  protected:
    SystemAudioCaptureTests() {
        server.setDevices(devices({"a"}, "a"));
        capture->delegate = listener;
    }

    static SoundDevices devices(const std::vector<std::string>& outputs,
                                const std::string& defaultOutput) {
        SoundDevices all;
        for (const auto& id : outputs)
            all.outputs.push_back(ScriptedSoundServer::output(id));
        all.defaultOutputID = defaultOutput;
        return all;
    }
    void beginStart() {
        spawn(Executor::main(host), testing::noteOutcome(capture->start(), &outcome));
    }
    void start() {
        beginStart();
        host.advanceBy(0);
        ASSERT_EQ(outcome, "done");
    }
    std::vector<Kind> kinds() const {
        std::vector<Kind> all;
        for (const auto& event : listener->events)
            all.push_back(event.kind);
        return all;
    }

    SimulatedHost host{1000};
    ScriptedSoundServer server{host};
    std::shared_ptr<Listener> listener = std::make_shared<Listener>(host);
    std::shared_ptr<SystemAudioCapture> capture = SystemAudioCapture::create(host, server);
    std::string outcome;
};

TEST_F(SystemAudioCaptureTests, DeliversTheMonitorAsOneChannelWithALevelEachEighthBuffer) {
    start();
    for (int i = 0; i < 17; ++i)
        server.deliver("a.monitor", 1.0F);
    host.advanceBy(0);
    ASSERT_EQ(listener->buffers.size(), 17U);
    EXPECT_EQ(listener->buffers[0]->format, (AudioFormat{48000, 1}));
    EXPECT_EQ(listener->levels,
              (std::vector<std::pair<std::size_t, double>>{{1, 1.0}, {8, 1.0}, {16, 1.0}}));
}

TEST_F(SystemAudioCaptureTests, LevelsSpanSixtyDecibels) {
    const auto level = [](std::vector<float> samples) {
        return SystemAudioCapture::audioLevel({{48000, 2}, std::move(samples)});
    };
    EXPECT_EQ(level({}), 0.0);
    EXPECT_EQ(level({0, 0}), 0.0);
    EXPECT_EQ(level({1, -1, -1, 1}), 1.0);
    EXPECT_EQ(level({2, -2}), 1.0) << "above full scale";
    EXPECT_NEAR(level({0.001F, -0.001F}), 0.0, 1e-6);
    EXPECT_NEAR(level({0.1F, -0.1F}), 2.0 / 3, 1e-6);
    EXPECT_NEAR(level({1, 0, 0, 0}), (20 * std::log10(0.5) + 60) / 60, 1e-12);
}

TEST_F(SystemAudioCaptureTests, SilenceIsReportedOnceAfterTenSecondsWithoutAnyBuffer) {
    struct Step {
        const char* name;
        double firstBufferAt; // 0: no buffer comes
        std::vector<double> silentAt;
    };
    for (const Step& step : {Step{"no buffer", 0, {10.0}}, Step{"first buffer at 9.9 s", 9.9, {}},
                             Step{"first buffer at 10.1 s", 10.1, {10.0}}}) {
        SCOPED_TRACE(step.name);
        listener->silentAt.clear();
        const double begin = host.now();
        start();
        if (step.firstBufferAt > 0)
            host.after(step.firstBufferAt, [&] { server.deliver("a.monitor", 0.0F); });
        host.advanceBy(30);
        std::vector<double> after;
        for (const double time : listener->silentAt)
            after.push_back(time - begin);
        EXPECT_EQ(after, step.silentAt);
    }
    listener->silentAt.clear();
    start();
    capture->stop();
    host.advanceBy(30);
    EXPECT_TRUE(listener->silentAt.empty()) << "a stopped capture does not report silence";
}

TEST_F(SystemAudioCaptureTests, AFailedStartSaysWhatFailedAndLeavesNothingOpen) {
    struct Step {
        const char* name;
        std::function<void()> fault;
        std::string text;
    };
    const SoundServerError refused(SoundServerError::connectionRefused, "refused");
    const SoundServerError denied(SoundServerError::accessDenied, "denied");
    const Step steps[] = {
        {"no server", [&] { server.connectFailure = refused; }, "创建系统音频 Tap 失败：6。"},
        {"no output", [&] { server.setDevices(devices({}, "")); },
         "读取系统音频 Tap 标识失败：5。"},
        {"output with a sample rate of 0",
         [&] {
             SoundDevices all = devices({"a"}, "a");
             all.outputs[0].format.sampleRate = 0;
             server.setDevices(all);
         },
         "系统音频格式暂不支持。"},
        {"stream refused", [&] { server.openFailure = denied; }, "启动系统音频接收失败：1。"},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.name);
        step.fault();
        beginStart();
        host.advanceBy(60);
        EXPECT_EQ(outcome, step.text);
        EXPECT_TRUE(server.openSources().empty());
        EXPECT_TRUE(listener->silentAt.empty());
        server.connectFailure.reset();
        server.openFailure.reset();
        server.setDevices(devices({"a"}, "a"));
    }
    start();
    EXPECT_EQ(server.openSources().size(), 1U);
}

TEST(SystemAudioCaptureErrorTests, DescribesAStatusOfFourPrintableBytesAsText) {
    EXPECT_EQ(SystemAudioCaptureError::describe(0x6e6f7065), "'nope'");
    EXPECT_EQ(SystemAudioCaptureError::describe(-50), "-50");
    EXPECT_EQ(SystemAudioCaptureError::describe(0x6e6f701f), std::to_string(0x6e6f701f));
    EXPECT_EQ(SystemAudioCaptureError::describe(6), "6");
}

TEST_F(SystemAudioCaptureTests, ASecondStartReplacesTheStreamAndAStopEndsAPendingStart) {
    start();
    start();
    EXPECT_EQ(server.openSources().size(), 1U);
    server.deliver("a.monitor", 1.0F);
    capture->stop();
    host.advanceBy(0);
    const std::size_t before = listener->buffers.size();
    server.deliver("a.monitor", 1.0F);
    host.advanceBy(0);
    EXPECT_EQ(listener->buffers.size(), before);
    EXPECT_TRUE(server.openSources().empty());

    for (double* delay : {&server.connectDelay, &server.openDelay}) {
        *delay = 1;
        beginStart();
        host.advanceBy(0.5);
        capture->stop();
        host.advanceBy(60);
        EXPECT_EQ(outcome, "启动系统音频接收失败：12。");
        EXPECT_TRUE(server.openSources().empty());
        *delay = 0;
    }
}

TEST_F(SystemAudioCaptureTests, FollowsTheDefaultOutputWithoutAGap) {
    server.setDevices(devices({"a", "b"}, "a"));
    start();
    server.keepDelivering(0.5F);
    host.advanceBy(1);
    server.openDelay = 0.2;
    const std::size_t before = listener->buffers.size();
    server.setDevices(devices({"a", "b"}, "b"));
    host.advanceBy(0.15);
    EXPECT_EQ(server.openSources(), std::vector<std::string>{"a.monitor"});
    EXPECT_NEAR(static_cast<double>(listener->buffers.size() - before), 15, 1)
        << "the old stream delivers until the new one is open";
    host.advanceBy(1);
    EXPECT_EQ(server.openSources(), std::vector<std::string>{"b.monitor"});
    EXPECT_EQ(listener->events, (std::vector<CaptureEvent>{{Kind::deviceChanged, 0, "Output b"}}));

    // The default changes back before the new stream is open, so the old stream stays.
    server.setDevices(devices({"a", "b"}, "a"));
    host.advanceBy(0.1);
    server.setDevices(devices({"a", "b"}, "b"));
    host.advanceBy(1);
    EXPECT_EQ(server.openSources(), std::vector<std::string>{"b.monitor"});
    EXPECT_EQ(listener->events.size(), 1U);
}

TEST_F(SystemAudioCaptureTests, ResumesAfterEachInterruptionAndReportsTheGap) {
    struct Step {
        const char* name;
        std::function<void()> takeAway;
        double away; // seconds
        std::function<void()> giveBack;
        int status;
        std::vector<Kind> kinds;
        double gap; // minimum; reconnecting adds up to two seconds
    };
    const std::vector<Kind> same = {Kind::interrupted, Kind::resumed};
    const std::vector<Kind> other = {Kind::interrupted, Kind::deviceChanged, Kind::resumed};
    const Step steps[] = {
        {"another device opens slowly",
         [&] {
             server.openDelay = 3;
             server.setDevices(devices({"b"}, "b"));
         },
         12, [&] { server.openDelay = 0; }, SoundServerError::streamKilled, other, 6},
        {"unplugged while there is another device", [&] { server.setDevices(devices({"b"}, "b")); },
         5, [] {}, SoundServerError::streamKilled, other, 0},
        {"server restarted", [&] { server.goDown(); }, 7, [&] { server.comeBack(); },
         SoundServerError::connectionTerminated, same, 7},
        {"device asleep", [&] { server.keepDelivering(std::nullopt); }, 20,
         [&] { server.keepDelivering(0.5F); }, SoundServerError::timeout, same, 20},
        {"another device cannot be opened for a while",
         [&] {
             server.openFailure = SoundServerError(SoundServerError::timeout, "busy");
             server.setDevices(devices({"b"}, "b"));
         },
         9, [&] { server.openFailure.reset(); }, SoundServerError::streamKilled, other, 9},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.name);
        server.setDevices(devices({"a"}, "a"));
        start();
        server.keepDelivering(0.5F);
        host.advanceBy(1);
        listener->events.clear();
        const std::size_t opened = server.requests.size();
        step.takeAway();
        host.advanceBy(step.away);
        EXPECT_LT(server.requests.size() - opened, 15U) << "there are pauses between the attempts";
        step.giveBack();
        host.advanceBy(5);
        EXPECT_EQ(kinds(), step.kinds);
        EXPECT_EQ(listener->events.front().status, step.status);
        EXPECT_NEAR(listener->events.back().gapSeconds, step.gap + 1, 1.03);
        EXPECT_EQ(server.openSources().size(), 1U);
    }
    server.openFailure = SoundServerError(SoundServerError::timeout, "busy"); // for 0.1 s
    server.setDevices(devices({"a"}, "a"));
    host.advanceBy(0.1);
    server.openFailure.reset();
    host.advanceBy(0.5);
    EXPECT_EQ(server.openSources().size(), 1U) << "after a success the pauses are short again";
}

TEST_F(SystemAudioCaptureTests, LateSoundIsAGapOnlyIfItIsTheFirstOfAnotherOutput) {
    server.setDevices(devices({"a", "b"}, "a"));
    start();
    server.keepDelivering(0.5F);
    host.advanceBy(1);
    server.keepDelivering(std::nullopt); // the server keeps the next sound and delivers it late
    host.advanceBy(2);
    server.deliver("a.monitor", 0.5F, 2);
    server.keepDelivering(0.5F);
    host.advanceBy(1);
    EXPECT_TRUE(listener->events.empty());

    server.keepDelivering(std::nullopt);
    server.setDevices(devices({"a", "b"}, "b"));
    host.advanceBy(1.5);
    server.keepDelivering(0.5F);
    host.advanceBy(1);
    EXPECT_EQ(kinds(), (std::vector<Kind>{Kind::deviceChanged, Kind::resumed}));
    EXPECT_NEAR(listener->events.back().gapSeconds, 1.5, 0.02);
}

TEST(SystemAudioCaptureSleepTests, AProgramThatDidNotRunLosesOnlyWhatTheServerDidNotKeep) {
    struct Step {
        double stopped; // seconds
        double waiting; // seconds of sound that the server kept
        double lost;
    };
    // The last two steps are a sleeping computer and a pause too short to count as a gap.
    for (const Step& step : {Step{6, 6, 0}, Step{30, 20, 10}, Step{6, 0, 6}, Step{1, 1, 0},
                             Step{3600, 0, 3600}, Step{2, 0, 0}}) {
        SCOPED_TRACE(::testing::Message() << step.stopped << " s, kept " << step.waiting << " s");
        testing::WorkingHost host;
        ScriptedSoundServer server(host.simulated);
        auto ears = std::make_shared<Listener>(host.simulated);
        auto capture = SystemAudioCapture::create(host, server);
        capture->delegate = ears;
        SoundDevices devices;
        devices.outputs = {ScriptedSoundServer::output("a")};
        devices.defaultOutputID = "a";
        server.setDevices(devices);
        spawn(Executor::main(host), capture->start());
        host.simulated.advanceBy(0);
        server.keepDelivering(0.5F);
        host.simulated.advanceBy(5);
        host.worked += step.stopped;
        const std::size_t before = ears->buffers.size();
        const auto waiting = static_cast<std::size_t>(step.waiting * 100 + 0.5);
        for (std::size_t i = 0; i < waiting; ++i)
            server.deliver("a.monitor", 0.25F);
        host.simulated.advanceBy(5);
        capture->stop();
        host.simulated.advanceBy(0);

        double heard = 0;
        for (const AudioBufferPtr& buffer : ears->buffers)
            heard += buffer->seconds();
        double gaps = 0;
        for (const CaptureEvent& event : ears->events)
            gaps += event.gapSeconds;
        EXPECT_NEAR(gaps, step.lost, 0.05);
        EXPECT_NEAR(heard + gaps, 10 + step.waiting + step.lost, 0.1)
            << "sound and gaps together have the expected length";
        EXPECT_EQ(ears->events.size(), step.lost > 0 ? 2U : 0U);
        if (step.lost > 0) {
            EXPECT_NEAR(static_cast<double>(ears->eventsAfter.back()),
                        static_cast<double>(before + waiting), 4)
                << "the gap follows the sound that the server kept";
        }
    }
}

TEST_F(SystemAudioCaptureTests, AnySequenceOfFaultsEndsInOneStreamOnTheDefaultOutput) {
    for (std::uint64_t seed = 1; seed <= 100; ++seed) {
        SimulatedHost chaos(0, seed);
        ScriptedSoundServer shaky(chaos);
        auto ears = std::make_shared<Listener>(chaos);
        auto tap = SystemAudioCapture::create(chaos, shaky);
        tap->delegate = ears;
        shaky.setDevices(devices({"a", "b"}, "a"));
        spawn(Executor::main(chaos), tap->start());
        chaos.advanceBy(1);
        shaky.keepDelivering(0.1F, 0.1);
        for (int i = 0; i < 30; ++i) {
            shaky.openDelay = static_cast<double>(chaos.random()() % 4) * 0.1;
            switch (chaos.random()() % 6) {
            case 0:
                shaky.setDevices(devices({"a", "b"}, "b"));
                break;
            case 1:
                shaky.setDevices(devices({"a"}, "a"));
                break;
            case 2:
                shaky.setDevices(devices({}, ""));
                break;
            case 3:
                shaky.goDown();
                break;
            case 4:
                shaky.comeBack();
                break;
            default:
                shaky.openFailure = SoundServerError(1, "no");
            }
            chaos.advanceBy(static_cast<double>(chaos.random()() % 30) * 0.1);
            shaky.openFailure.reset();
            ASSERT_LE(shaky.openSources().size(), 2U) << "seed " << seed;
        }
        shaky.setDevices(devices({"a", "b"}, "b"));
        shaky.comeBack();
        chaos.advanceBy(5);
        const std::size_t before = ears->buffers.size();
        chaos.advanceBy(1);
        ASSERT_EQ(shaky.openSources(), std::vector<std::string>{"b.monitor"}) << "seed " << seed;
        ASSERT_NEAR(static_cast<double>(ears->buffers.size() - before), 10, 1) << "seed " << seed;
        int open = 0; // interruptions and resumptions alternate
        for (const auto& event : ears->events) {
            open += event.kind == Kind::interrupted ? 1 : event.kind == Kind::resumed ? -1 : 0;
            ASSERT_TRUE(open == 0 || open == 1) << "seed " << seed;
        }
        ASSERT_EQ(open, 0) << "seed " << seed;
    }
}

} // namespace
} // namespace tessarune
