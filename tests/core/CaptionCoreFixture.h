#pragma once

#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "TessaruneCore/text/Text.h"

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace tessarune {

struct ScriptStep {
    double at = 0;
    char kind = 0;
    std::string text;
};

/// Reads "100 p text;100.5 f text": at each time a partial (p), a final (f), a reset (r) or the
/// cancellation of the pending partial (c). The text follows the kind and one blank.
inline std::vector<ScriptStep> scriptSteps(const std::string& script) {
    std::vector<ScriptStep> steps;
    std::istringstream all(script);
    for (std::string each; std::getline(all, each, ';');) {
        std::istringstream in(each);
        ScriptStep& step = steps.emplace_back();
        in >> step.at >> step.kind;
        in.get();
        std::getline(in, step.text, '\0');
    }
    return steps;
}

/// A core on simulated time whose settings a test may change at any moment.
struct CaptionCoreFixture {
    explicit CaptionCoreFixture(double startTime = 100) : host(startTime) {}

    SimulatedHost host;
    CaptionCore::Config config{true, true, false};
    EngineCapabilities caps;
    int timersStarted = 0;
    std::unique_ptr<CaptionCore> core = std::make_unique<CaptionCore>(
        [this] { return config; }, [this] { return caps; }, [this] { return host.now(); },
        [this](double delay, Block block) {
            ++timersStarted;
            host.after(delay, std::move(block));
        },
        countingUUIDSource());

    void final(const std::string& text, double start = 1, double end = 2,
               std::optional<std::vector<ASRWordTiming>> words = std::nullopt) const {
        core->ingest(ASREvent::final(text, start, end, EndpointReason::silence, std::move(words)));
    }

    void play(const std::string& script) {
        for (const ScriptStep& step : scriptSteps(script)) {
            host.advanceTo(step.at);
            if (step.kind == 'p')
                core->ingest(ASREvent::partial(step.text, 0, step.at));
            if (step.kind == 'f')
                final(step.text);
            if (step.kind == 'r')
                core->reset(step.at);
            if (step.kind == 'c')
                core->cancelPendingPartial();
        }
    }

    static std::string texts(const CaptionCore::Rows& rows) {
        std::vector<std::string> all;
        for (const CaptionSegment& row : rows)
            all.push_back(row.sourceText + std::string(markerSuffix(row.freezeKind)));
        return Text::joined(all, "|");
    }

    /// "committed / leading / soft / open", the rows separated by "|" and marked by freeze kind.
    std::string shown() const {
        return texts(*core->committedSegments) + " / " + texts(*core->liveLeadingSentences) +
               " / " + texts(*core->softCaptionSegments) + " / " + core->currentPartial->sourceText;
    }
};

inline std::string name(CaptionCore::Activity activity) {
    const char* names[] = {"deduped", "applied", "final"};
    return names[static_cast<int>(activity)];
}

} // namespace tessarune
