#pragma once

#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "TessaruneCore/text/Text.h"

#include <memory>
#include <string>
#include <vector>

namespace tessarune {

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

    void partial(double at, std::string text, std::int64_t revision = 0) {
        host.advanceTo(at);
        core->ingest(ASREvent::partial(std::move(text), revision, at));
    }

    void final(double at, std::string text, double start = 1, double end = 2,
               std::optional<std::vector<ASRWordTiming>> words = std::nullopt) {
        host.advanceTo(at);
        core->ingest(ASREvent::final(std::move(text), start, end, EndpointReason::silence,
                                     std::move(words)));
    }

    static std::vector<std::string> texts(const CaptionCore::Rows& rows) {
        std::vector<std::string> texts;
        for (const CaptionSegment& row : rows)
            texts.push_back(row.sourceText + std::string(markerSuffix(row.freezeKind)));
        return texts;
    }

    /// "committed / leading / soft / open", rows separated by "|".
    std::string shown() const {
        return Text::joined(texts(*core->committedSegments), "|") + " / " +
               Text::joined(texts(*core->liveLeadingSentences), "|") + " / " +
               Text::joined(texts(*core->softCaptionSegments), "|") + " / " +
               core->currentPartial->sourceText;
    }
};

inline std::string word(CaptionCore::Activity activity) {
    switch (activity) {
    case CaptionCore::Activity::partialDeduped:
        return "deduped";
    case CaptionCore::Activity::partialApplied:
        return "applied";
    case CaptionCore::Activity::finalApplied:
        return "final";
    }
    return "";
}

} // namespace tessarune
