#include "Tessarune/audio/PermissionsManager.h"
#include "Tessarune/audio/RecognitionPermissionGate.h"
#include "TessaruneCore/LocalizedError.h"
#include "tests/simulation/ScriptedSoundServer.h"
#include "tests/support/Await.h"
#include "tests/support/MemoryUserDefaults.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tessarune {
namespace {

using testing::ScriptedSoundServer;
using Status = PermissionsManager::Status;
using Key = PermissionsManager::Key;
using Authorization = SystemAuthorization::Status;

struct CountedDefaults final : testing::MemoryUserDefaults {
    void set(std::string_view key, SettingValue value) override {
        MemoryUserDefaults::set(key, std::move(value));
        ++writes;
    }
    int writes = 0;
};

Task<bool> answered(bool answer) {
    co_return answer;
}

class PermissionsTests : public ::testing::Test {
  protected:
    PermissionsTests() {
        server.setDevices({{ScriptedSoundServer::input("mic"), ScriptedSoundServer::input("usb")},
                           {ScriptedSoundServer::output("speaker")},
                           "mic",
                           "speaker"});
    }
    /// A desktop that has the speech permission in state `speech` and whose user gives `answer`;
    /// the sound server decides about the microphone.
    SystemAuthorization system(Authorization speech, bool answer) {
        SystemAuthorization made = SystemAuthorization::ofServer(host, server);
        made.speechStatus = [speech] { return speech; };
        made.requestSpeech = [this, answer] {
            ++speechRequests;
            return answered(answer);
        };
        return made;
    }
    std::string gate(PermissionsManager& permissions, AudioSource source) {
        try {
            testing::await(host, RecognitionPermissionGate::requestRequiredPermissions(
                                     permissions, std::move(source), "option"));
            return "passed";
        } catch (const LocalizedError& error) {
            return error.domain() + " " + std::to_string(error.code()) + " " + error.what();
        }
    }

    SimulatedHost host;
    ScriptedSoundServer server{host};
    CountedDefaults defaults;
    int speechRequests = 0;
};

TEST_F(PermissionsTests, TheGatePassesOrSaysWhatIsRefused) {
    const std::string microphone =
        "Tessarune 2 未授权「麦克风」。请在系统设置 → 隐私与安全 → 麦克风 中开启 Tessarune。";
    const std::string speech =
        "Tessarune 3 未授权「语音识别」。请在系统设置 → 隐私与安全 → 语音识别 中开启 Tessarune。";
    struct Step {
        const char* name;
        AudioSource source;
        int serverStatus; // the server's answer when a microphone is opened
        Authorization speech;
        bool answer;
        std::string outcome;
        Status microphoneAfter;
        Status speechAfter;
    };
    const auto mic = AudioSource::microphone();
    const auto tap = AudioSource::systemAudio();
    constexpr int works = 0;
    constexpr int refuses = SoundServerError::accessDenied;
    constexpr int doesNotAnswer = SoundServerError::timeout;
    const Step steps[] = {
        {"all granted", mic, works, Authorization::authorized, true, "passed", Status::granted,
         Status::unknown},
        {"system audio does not ask for the microphone", tap, refuses, Authorization::authorized,
         true, "passed", Status::unknown, Status::unknown},
        {"a chosen microphone is the one that is opened", AudioSource::microphone("usb"), works,
         Authorization::authorized, true, "passed", Status::granted, Status::unknown},
        {"the server refuses the microphone", mic, refuses, Authorization::authorized, true,
         microphone, Status::denied, Status::unknown},
        {"a broken server is not a refusal", mic, doesNotAnswer, Authorization::authorized, true,
         "passed", Status::granted, Status::unknown},
        {"speech is requested and granted", tap, works, Authorization::notDetermined, true,
         "passed", Status::unknown, Status::granted},
        {"speech is requested and refused", tap, works, Authorization::notDetermined, false, speech,
         Status::unknown, Status::denied},
        {"speech was denied before", tap, works, Authorization::denied, true, speech,
         Status::unknown, Status::denied},
        {"speech is restricted", mic, works, Authorization::restricted, true, speech,
         Status::granted, Status::denied},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.name);
        CountedDefaults own;
        server.openFailure.reset();
        if (step.serverStatus != works)
            server.openFailure = SoundServerError(step.serverStatus, "fault");
        PermissionsManager permissions(host, server, own, system(step.speech, step.answer));
        EXPECT_EQ(gate(permissions, step.source), step.outcome);
        EXPECT_EQ(*permissions.microphone, step.microphoneAfter);
        EXPECT_EQ(*permissions.speech, step.speechAfter);
        EXPECT_TRUE(server.openSources().empty()) << "a request leaves no stream open";
        if (step.source.isMicrophone()) {
            EXPECT_EQ(server.requests.back().sourceID, step.source.deviceID().value_or("mic"));
        }
        PermissionsManager again(host, server, own, system(step.speech, step.answer));
        EXPECT_EQ(*again.microphone, step.microphoneAfter) << "the status is stored";
    }
}

TEST_F(PermissionsTests, ARefusalIsValidUntilTheNextRequest) {
    PermissionsManager permissions(host, server, defaults, system(Authorization::authorized, true));
    const auto ask = [&] { return gate(permissions, AudioSource::microphone()); };
    server.openFailure = SoundServerError(SoundServerError::accessDenied, "no");
    EXPECT_NE(ask(), "passed");
    server.openFailure = SoundServerError(SoundServerError::timeout, "busy");
    EXPECT_EQ(ask(), "passed") << "a failure other than a refusal lets the session pass";
    permissions.refresh();
    EXPECT_EQ(*permissions.microphone, Status::granted) << "an undetermined status changes nothing";
    EXPECT_EQ(*permissions.speech, Status::granted);
}

TEST_F(PermissionsTests, ALatchPublishesAndStoresOnlyWhatChanges) {
    defaults.set("speechStatus", std::string("nonsense"));
    defaults.set("systemAudioStatus", true);
    PermissionsManager permissions(host, server, defaults, system(Authorization::authorized, true));
    EXPECT_EQ(*permissions.speech, Status::unknown);
    EXPECT_EQ(*permissions.systemAudio, Status::unknown);

    std::vector<Status> published;
    permissions.systemAudio.onDidChange([&](Status now) { published.push_back(now); });
    permissions.latch(Key::systemAudioStatus, Status::granted);
    permissions.latch(Key::systemAudioStatus, Status::granted);
    permissions.merge(Key::systemAudioStatus, Status::unknown);
    permissions.merge(Key::systemAudioStatus, Status::denied);
    permissions.latch(Key::systemAudioStatus, Status::unknown);
    EXPECT_EQ(published, (std::vector<Status>{Status::granted, Status::denied, Status::unknown}));
    EXPECT_EQ(defaults.writes, 2 + 3) << "two writes by this test, and one for each change";
    EXPECT_EQ(defaults.value("systemAudioStatus"), SettingValue(std::string("unknown")));
}

TEST_F(PermissionsTests, LaunchAsksForSpeechOnceAndOnlyIfNothingIsKnown) {
    PermissionsManager permissions(host, server, defaults,
                                   system(Authorization::notDetermined, true));
    permissions.bootstrap();
    permissions.bootstrap();
    host.advanceBy(0);
    EXPECT_EQ(speechRequests, 1);
    EXPECT_EQ(defaults.value("speechStatus"), SettingValue(std::string("granted")));
    PermissionsManager next(host, server, defaults, system(Authorization::notDetermined, true));
    next.bootstrap();
    host.advanceBy(0);
    EXPECT_EQ(speechRequests, 1);
}

TEST_F(PermissionsTests, TheProbeDecidesByWhetherSoundArrives) {
    PermissionsManager permissions(host, server, defaults, system(Authorization::authorized, true));
    const auto probed = [&] {
        spawn(Executor::main(host), permissions.deepProbeSystemAudio(2));
        host.advanceBy(3);
        EXPECT_TRUE(server.openSources().empty());
        return *permissions.systemAudio;
    };
    host.after(1.5, [&] { server.deliver("speaker.monitor", 0.0F); });
    EXPECT_EQ(probed(), Status::granted) << "a silent buffer counts as sound";
    EXPECT_EQ(probed(), Status::denied);
    server.openFailure = SoundServerError(SoundServerError::timeout, "fault");
    EXPECT_EQ(probed(), Status::unknown);
}

} // namespace
} // namespace tessarune
