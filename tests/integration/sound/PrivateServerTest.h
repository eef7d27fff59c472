#pragma once

#include "Tessarune/platform/host/LoopHost.h"
#include "Tessarune/platform/pulse/PrivateSoundServer.h"
#include "Tessarune/platform/pulse/PulseSoundServer.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>

namespace tessarune {

/// Runs each test with a private sound server, once per installed kind.
class PrivateServerTest : public ::testing::TestWithParam<PrivateSoundServer::Kind> {
  public:
    using Kind = PrivateSoundServer::Kind;
    static auto kinds() { return ::testing::Values(Kind::pulseAudio, Kind::pipeWire); }
    static std::string nameOf(const ::testing::TestParamInfo<Kind>& kind) {
        return kind.param == Kind::pulseAudio ? "PulseAudio" : "PipeWire";
    }

  protected:
    static constexpr double patience = 20; // seconds; far more than anything takes

    void SetUp() override {
        if (!PrivateSoundServer::isInstalled(GetParam()))
            GTEST_SKIP() << "the programs of this sound server are not installed";
        daemon = std::make_unique<PrivateSoundServer>(GetParam());
        server = std::make_unique<PulseSoundServer>(daemon->address());
    }

    template <typename Condition>
    bool eventually(Condition condition, double seconds = patience) {
        const double deadline = host.now() + seconds;
        std::function<void()> look = [&] {
            if (condition() || host.now() > deadline)
                host.quit();
            else
                host.after(0.01, look);
        };
        look();
        host.run();
        return condition();
    }
    /// Runs pactl against the private server; returns the first line of its output.
    std::string control(const std::string& arguments) const {
        const std::string command = "PULSE_SERVER=" + daemon->address() + " pactl " + arguments;
        std::string printed;
        FILE* pipe = popen(command.c_str(), "r");
        for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe))
            printed += static_cast<char>(c);
        EXPECT_EQ(pclose(pipe), 0) << command;
        return printed.substr(0, printed.find('\n'));
    }

    LoopHost host;
    std::unique_ptr<PrivateSoundServer> daemon;
    std::unique_ptr<PulseSoundServer> server;
};

} // namespace tessarune
