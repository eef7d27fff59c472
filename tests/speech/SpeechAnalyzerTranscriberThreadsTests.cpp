#include "Tessarune/platform/host/LoopHost.h"
#include "Tessarune/speech/SpeechAnalyzerTranscriber.h"
#include "tests/simulation/ScriptedAssetInventory.h"
#include "tests/simulation/ScriptedAudioConverter.h"
#include "tests/simulation/ScriptedSpeechEngine.h"
#include "tests/support/RuntimeLog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace tessarune {
namespace {

using simulation::spoken;

/// Real threads on one transcriber: two capture, one requests finals and counters, and the main
/// queue runs sessions and drains the last one. Meant for the thread sanitizer.
class Hammer {
  public:
    explicit Hammer(LoopHost& host) : host_(host) {
        // A partial every tenth of a second and a final every second.
        for (int i = 1; i <= 100; ++i)
            engine_.script.lines.push_back({i * 0.1, spoken(i % 10 == 0, "one two", i * 0.1)});
        transcriber_->onEvent = [this](const ASREvent& event) {
            sent_ += 1;
            if (std::holds_alternative<ASREvent::Final>(event.value) && finished_)
                lateFinals_ += 1;
        };
        transcriber_->onSummaryResult = [](const auto&) {};
        transcriber_->onReconcileDecision = [this](const auto&) { decided_ += 1; };
    }

    static Task<void> run(Hammer& hammer) {
        for (int session = 0; session < 8; ++session) {
            Task<void> starting = hammer.transcriber_->start("en-US");
            co_await starting;
            Task<bool> sleeping = sleep(Executor::main(hammer.host_), 0.02);
            co_await sleeping;
            if (session % 2 == 0)
                hammer.transcriber_->reset();
            if (session < 7)
                hammer.transcriber_->stop();
        }
        Task<bool> sleeping = sleep(Executor::main(hammer.host_), 0.1);
        co_await sleeping;
        hammer.capturing_ = false;
        Task<void> draining = hammer.transcriber_->finishDrainingAndStop();
        co_await draining;
        hammer.finished_ = true;
        Task<bool> settling = sleep(Executor::main(hammer.host_), 0.05);
        co_await settling;
        hammer.host_.quit();
    }

    void capture() {
        const auto buffer = std::make_shared<const AudioBuffer>(
            AudioBuffer{{48000, 2}, std::vector<float>(2 * 480, 0.1F)});
        while (capturing_) {
            transcriber_->append(buffer);
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    }
    void ask() {
        while (capturing_) {
            transcriber_->requestFinalization("sentence");
            transcriber_->perfStats();
            std::this_thread::sleep_for(std::chrono::microseconds(500));
        }
    }

    int sent() const { return sent_; }
    int decided() const { return decided_; }
    int lateFinals() const { return lateFinals_; }
    double heardInLastSession() { return engine_.session().heardSeconds; }
    double converted() { return transcriber_->perfStats().at("convertedAudioSeconds"); }

  private:
    LoopHost& host_;
    testing::RuntimeLog log_{host_};
    simulation::ScriptedSpeechEngine engine_{host_};
    simulation::ScriptedAssetInventory assets_{host_};
    simulation::ScriptedAudioConverters converters_;
    std::atomic<bool> capturing_ = true;
    std::atomic<bool> finished_ = false;
    std::atomic<int> sent_ = 0;
    std::atomic<int> decided_ = 0;
    std::atomic<int> lateFinals_ = 0;
    std::shared_ptr<SpeechAnalyzerTranscriber> transcriber_ = SpeechAnalyzerTranscriber::make(
        "en-US", {host_, engine_.engine(), assets_, converters_.maker(), log_.logger});
};

TEST(SpeechAnalyzerTranscriberThreadsTests, CaptureRequestsAndSessionsRunConcurrently) {
    LoopHost host;
    Hammer hammer(host);
    spawn(Executor::main(host), Hammer::run(hammer));
    std::thread threads[] = {std::thread([&] { hammer.capture(); }),
                             std::thread([&] { hammer.capture(); }),
                             std::thread([&] { hammer.ask(); })};
    host.run();
    for (auto& thread : threads)
        thread.join();
    EXPECT_GT(hammer.sent(), 0);
    EXPECT_GT(hammer.decided(), 0);
    EXPECT_EQ(hammer.lateFinals(), 0);
    EXPECT_DOUBLE_EQ(hammer.heardInLastSession(), hammer.converted())
        << "the engine has heard all sound of the drained session";
}

} // namespace
} // namespace tessarune
