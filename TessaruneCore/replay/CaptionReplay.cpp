#include "TessaruneCore/replay/CaptionReplay.h"

#include "TessaruneCore/host/SimulatedHost.h"
#include "TessaruneCore/text/Text.h"

#include <optional>

namespace tessarune::CaptionReplay {

namespace {

/// The sign is always written: a negative offset shows both.
std::string offset(const std::optional<double>& time, double t0) {
    return time ? "+" + Text::fixed(*time - t0, 2) : "—";
}

std::string timingLine(const CaptionSegment& row, const CaptionCore::WordEvents& wordEvents,
                       double t0) {
    std::vector<std::string> words;
    if (const auto found = wordEvents.find(row.id); found != wordEvents.end()) {
        for (const WordEvent& event : found->second)
            words.push_back(event.word + "@" + offset(event.firstSeenAt, t0));
    }
    return "「" + row.sourceText + "」 firstSeen=" + offset(row.firstSeenAt, t0) +
           " committed=" + offset(row.committedAt, t0) +
           " 改写=" + std::to_string(row.revisionCount) + "  词: " + Text::joined(words, " ");
}

std::vector<std::string> openLines(const CaptionCore& core) {
    std::vector<std::string> lines;
    for (const auto* list : {&core.liveLeadingSentences, &core.softCaptionSegments}) {
        for (const CaptionSegment& row : **list)
            lines.push_back(row.sourceText);
    }
    const std::string_view open = Text::trimmed(core.currentPartial->sourceText);
    const bool alreadyCommitted = !core.committedSegments->empty() &&
                                  core.committedSegments->back().id == core.currentPartial->id;
    if (!open.empty() && !alreadyCommitted)
        lines.emplace_back(open);
    return lines;
}

} // namespace

std::string Output::transcript() const {
    std::vector<std::string> lines = committedLines;
    if (!liveLines.empty()) {
        lines.emplace_back("-- live --");
        lines.insert(lines.end(), liveLines.begin(), liveLines.end());
    }
    return Text::joined(lines, "\n");
}

Output run(const std::vector<ASREventRecord>& records, const CaptionCore::Config& config,
           const EngineCapabilities& caps, const Observer& observer) {
    const double t0 = records.empty() ? 0 : records.front().t;
    SimulatedHost host(t0);
    CaptionCore core = CaptionCore::onHost([&] { return config; }, [&] { return caps; }, host,
                                           countingUUIDSource());
    if (observer)
        core.onActivity = [&](CaptionCore::Activity activity) {
            observer(core, activity, host.now());
        };
    for (const ASREventRecord& record : records) {
        const std::optional<ASREvent> event = record.asEvent();
        if (!event)
            continue;
        host.advanceTo(record.t);
        core.ingest(*event);
    }
    host.runUntilIdle();

    Output output;
    output.liveLines = openLines(core);
    output.lockCount = *core.lockCount;
    output.finalCount = *core.finalCount;
    output.segments = *core.committedSegments;
    output.wordEvents = core.wordEvents();
    for (const CaptionSegment& row : output.segments) {
        output.committedLines.push_back(row.sourceText + std::string(markerSuffix(row.freezeKind)));
        output.segmentTimings.push_back(timingLine(row, output.wordEvents, t0));
    }
    return output;
}

} // namespace tessarune::CaptionReplay
