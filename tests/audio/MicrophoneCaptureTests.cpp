#include "Tessarune/audio/AudioInputDevices.h"
#include "Tessarune/audio/MicrophoneCapture.h"
#include "TessaruneCore/LocalizedError.h"
#include "tests/simulation/ScriptedSoundServer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tessarune {
namespace {

using testing::ScriptedSoundServer;

/// Halves the rate, and returns nothing for the first buffer, like a filter that still fills.
class HalvingConverter final : public AudioConverter {
  public:
    explicit HalvingConverter(AudioFormat from, AudioFormat to) : from_(from), to_(to) {}
    AudioFormat outputFormat() const override { return to_; }
    AudioBuffer convert(const AudioBuffer& input) override {
        if (input.format != from_)
            throw std::runtime_error("another format");
        AudioBuffer output{to_, {}};
        if (!std::exchange(isFirst_, false))
            output.samples.assign(input.frames() / 2, input.samples.front());
        return output;
    }
    AudioBuffer flush() override { return {to_, {}}; }

  private:
    AudioFormat from_;
    AudioFormat to_;
    bool isFirst_ = true;
};

Task<void> startMicrophone(std::shared_ptr<MicrophoneCapture> capture, std::optional<double> rate,
                           std::shared_ptr<std::string> outcome) {
    try {
        auto starting = capture->start(rate);
        co_await starting;
        *outcome = "started";
    } catch (const LocalizedError& error) {
        *outcome = error.domain() + ": " + error.what();
    } catch (const SoundServerError& error) {
        *outcome = "server: " + std::to_string(error.status());
    }
}

class MicrophoneCaptureTests : public ::testing::Test {
  protected:
    MicrophoneCaptureTests() { server.setDevices(devices({"usb", "built-in"}, "built-in")); }

    static SoundDevices devices(const std::vector<std::string>& inputs,
                                const std::string& defaultInput) {
        SoundDevices all;
        for (const auto& id : inputs)
            all.inputs.push_back(ScriptedSoundServer::input(
                id, id == "usb" ? AudioFormat{16000, 1} : AudioFormat{44100, 2}));
        all.outputs.push_back(ScriptedSoundServer::output("speaker"));
        all.defaultInputID = defaultInput;
        all.defaultOutputID = "speaker";
        return all;
    }
    std::string start(std::optional<std::string> deviceID, std::optional<double> rate = {}) {
        capture = MicrophoneCapture::create(
            host, server,
            [](AudioFormat from, AudioFormat to) -> std::unique_ptr<AudioConverter> {
                if (to.sampleRate < 8000)
                    throw std::runtime_error("too slow");
                return std::make_unique<HalvingConverter>(from, to);
            },
            std::move(deviceID));
        capture->onBuffer = [this](AudioBufferPtr buffer) { buffers.push_back(buffer); };
        capture->onLevel = [this](double level) { levels.push_back(level); };
        capture->onEvent = [this](const CaptureEvent& event) { events.push_back(event); };
        auto outcome = std::make_shared<std::string>();
        spawn(Executor::main(host), startMicrophone(capture, rate, outcome));
        host.advanceBy(0);
        return *outcome;
    }

    SimulatedHost host;
    ScriptedSoundServer server{host};
    std::shared_ptr<MicrophoneCapture> capture;
    std::vector<AudioBufferPtr> buffers;
    std::vector<double> levels;
    std::vector<CaptureEvent> events;
};

TEST_F(MicrophoneCaptureTests, DeliversTheDevicesOwnFormatAndALinearLevel) {
    ASSERT_EQ(start(std::nullopt), "started");
    for (int i = 0; i < 8; ++i)
        server.deliver("built-in", 0.1F);
    for (int i = 0; i < 8; ++i)
        server.deliver("built-in", 0.5F);
    host.advanceBy(0);
    ASSERT_EQ(buffers.size(), 16U);
    EXPECT_EQ(buffers[0]->format, (AudioFormat{44100, 2}));
    ASSERT_EQ(levels.size(), 2U);
    EXPECT_NEAR(levels[0], 0.6, 1e-6);
    EXPECT_EQ(levels[1], 1.0);

    spawn(Executor::main(host), capture->stop());
    host.advanceBy(0);
    EXPECT_TRUE(server.openSources().empty());
}

TEST_F(MicrophoneCaptureTests, ConvertsToTheRateThatIsAskedForAndDropsEmptyResults) {
    ASSERT_EQ(start("built-in", 16000), "started");
    server.deliver("built-in", 0.1F);
    server.deliver("built-in", 0.1F);
    host.advanceBy(0);
    ASSERT_EQ(buffers.size(), 1U);
    EXPECT_EQ(buffers[0]->format, (AudioFormat{16000, 1}));

    // "usb" replaces "built-in". It has another format, so it needs another converter.
    server.setDevices(devices({"usb"}, "usb"));
    host.advanceBy(1);
    server.deliver("usb", 0.2F);
    server.deliver("usb", 0.2F);
    host.advanceBy(0);
    ASSERT_EQ(buffers.size(), 2U);
    EXPECT_EQ(buffers[1]->frames(), 80U) << "half of 10 ms at 16,000 Hz";
}

TEST_F(MicrophoneCaptureTests, AFailedStartSaysWhatFailed) {
    const std::string domain = "Tessarune.MicrophoneCapture: ";
    EXPECT_EQ(start("gone"), domain + "无法切换到所选麦克风设备。");
    EXPECT_EQ(start("built-in", 4000), domain + "麦克风设备不可用。")
        << "there is no converter to 4,000 Hz";
    server.openFailure = SoundServerError(SoundServerError::accessDenied, "no");
    EXPECT_EQ(start("built-in"), "server: 1");
    server.openFailure.reset();
    server.setDevices(devices({"usb"}, "speaker.monitor"));
    EXPECT_EQ(start(std::nullopt), domain + "麦克风设备不可用。")
        << "the monitor of the speakers is no default microphone";
    EXPECT_EQ(start("speaker.monitor"), "started") << "a monitor that was chosen by name is used";
    server.connectFailure = SoundServerError(SoundServerError::connectionRefused, "no server");
    EXPECT_EQ(start("usb"), domain + "麦克风设备不可用。");
}

TEST_F(MicrophoneCaptureTests, AChosenDeviceIsReplacedWhileItIsAwayAndOnlyThen) {
    ASSERT_EQ(start("usb"), "started");
    server.keepDelivering(0.1F, 0.1);
    server.setDevices(devices({"usb", "built-in", "third"}, "third"));
    host.advanceBy(1);
    EXPECT_EQ(server.openSources(), std::vector<std::string>{"usb"});
    EXPECT_TRUE(events.empty());
    server.setDevices(devices({"built-in"}, "built-in"));
    host.advanceBy(1);
    EXPECT_EQ(server.openSources(), std::vector<std::string>{"built-in"});
    server.setDevices(devices({"built-in", "usb"}, "built-in"));
    host.advanceBy(1);
    EXPECT_EQ(server.openSources(), std::vector<std::string>{"usb"});
    std::vector<std::string> places;
    for (const auto& event : events) {
        if (event.kind == CaptureEvent::Kind::deviceChanged)
            places.push_back(event.text);
    }
    EXPECT_EQ(places, (std::vector<std::string>{"Input built-in", "Input usb"}));
}

TEST_F(MicrophoneCaptureTests, DevicesAreListedWithTheDefaultAndSourcesHaveNames) {
    ASSERT_EQ(start(std::nullopt), "started");
    SoundDevices all = devices({"usb", "built-in"}, "built-in");
    all.inputs.push_back(ScriptedSoundServer::input("broken", {44100, 0}));
    server.setDevices(all);
    const auto listed = AudioInputDevices::inputDevices(server);
    EXPECT_EQ(listed, (std::vector<AudioInputDevices::Device>{
                          {"usb", "Input usb", false}, {"built-in", "Input built-in", true}}));

    const auto name = [&](const AudioSource& source) {
        return AudioSourceDisplayName::name(source, listed);
    };
    EXPECT_EQ(name(AudioSource::systemAudio()), "系统声音");
    EXPECT_EQ(name(AudioSource::microphone()), "系统默认麦克风");
    EXPECT_EQ(name(AudioSource::microphone("usb")), "Input usb");
    EXPECT_EQ(name(AudioSource::microphone("gone")), "gone");
}

} // namespace
} // namespace tessarune
