#pragma once

#include "Tessarune/speech/SpeechAnalyzerTranscriber.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "TessaruneCore/text/Text.h"
#include "tests/simulation/ScriptedAssetInventory.h"
#include "tests/simulation/ScriptedAudioConverter.h"
#include "tests/simulation/ScriptedSpeechEngine.h"
#include "tests/support/Await.h"
#include "tests/support/RuntimeLog.h"

#include <gtest/gtest.h>

namespace tessarune {

/// A transcriber with a scripted recogniser in simulated time, beginning at 1000. What it sends is
/// noted as short texts: "~3 text" for the partial of revision 3, "= text" for a final.
struct TranscriberFixture : ::testing::Test {
    TranscriberFixture() { make(); }
    ~TranscriberFixture() override {
        transcriber.reset();
        host.runUntilIdle();
    }

    void make() {
        transcriber = SpeechAnalyzerTranscriber::make(
            "en-US", {host, engine.engine(), assets, converters.maker(), log.logger});
        transcriber->onEvent = [this](const ASREvent& event) {
            if (const auto* partial = std::get_if<ASREvent::Partial>(&event.value)) {
                sent.push_back("~" + std::to_string(partial->revision) + " " + partial->text);
                partials.push_back(*partial);
            } else {
                finals.push_back(std::get<ASREvent::Final>(event.value));
                sent.push_back("= " + finals.back().text);
            }
            times.push_back(host.now());
        };
        transcriber->onError = [this](const std::exception& error) {
            sent.push_back(std::string("! ") + error.what());
        };
        transcriber->onReconcileDecision = [this](const auto& record) {
            decisions.push_back(std::string(name(record.decision)));
        };
    }

    /// Begins an awaited operation and notes its result in `outcome`.
    void begin(Task<void> task) {
        spawn(Executor::main(host), testing::noteOutcome(std::move(task), &outcome));
        host.runDue(host.now());
    }
    void start() {
        begin(transcriber->start("en-US"));
        ASSERT_EQ(outcome, "done");
    }

    /// Appends one buffer now.
    void append(double seconds, AudioFormat format = {16000, 1}) {
        const auto samples = static_cast<std::size_t>(seconds * format.sampleRate + 0.5) *
                             static_cast<std::size_t>(format.channels);
        transcriber->append(std::make_shared<const AudioBuffer>(
            AudioBuffer{format, std::vector<float>(samples, 0.1F)}));
    }
    /// Delivers a result of the recogniser and runs everything that is due.
    void give(SpeechResult result) {
        engine.session().give(std::move(result));
        host.runDue(host.now());
    }
    double perf(const char* counter) { return transcriber->perfStats().at(counter); }

    SimulatedHost host{1000};
    testing::RuntimeLog log{host};
    simulation::ScriptedSpeechEngine engine{host};
    simulation::ScriptedAssetInventory assets{host};
    simulation::ScriptedAudioConverters converters;
    std::string outcome;
    std::vector<std::string> sent;
    std::vector<double> times; ///< of everything sent except errors
    std::vector<ASREvent::Partial> partials;
    std::vector<ASREvent::Final> finals;
    std::vector<std::string> decisions;
    std::shared_ptr<SpeechAnalyzerTranscriber> transcriber;
};

} // namespace tessarune
