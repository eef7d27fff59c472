#include "TessaruneCore/replay/CaptionReplay.h"

#include "TessaruneCore/host/SimulatedHost.h"
#include "TessaruneCore/replay/CaptionMark.h"
#include "TessaruneCore/text/Text.h"

#include <optional>
#include <variant>

namespace tessarune::CaptionReplay {

namespace {

/// The plus sign is always written, even for a negative offset: "+-0.30".
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

Output outputOf(const CaptionCore& core, double t0) {
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

void applyMark(CaptionMark mark, const ASREventRecord& record, CaptionCore& core,
               CaptionCore::Config& config) {
    switch (mark) {
    case CaptionMark::settings:
        config = captionSettings(record).value_or(config);
        break;
    case CaptionMark::open:
        core.currentPartial.mutate([&](CaptionSegment& row) { row.sourceText = record.text; });
        break;
    case CaptionMark::withdrawn:
        core.withdrawOpenText();
        break;
    case CaptionMark::stopped:
        core.cancelPendingPartial();
        break;
    case CaptionMark::sealed:
        core.sealLiveIntoHistory(record.t);
        break;
    case CaptionMark::ended:
        break;
    }
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
    return outputOf(core, t0);
}

Output runMarked(const std::vector<ASREventRecord>& records, const EngineCapabilities& caps) {
    const double t0 = records.empty() ? 0 : records.front().t;
    SimulatedHost host(t0);
    CaptionCore::Config config(false, false, false);
    CaptionCore core = CaptionCore::onHost([&] { return config; }, [&] { return caps; }, host,
                                           countingUUIDSource());
    bool isStopping = false;
    for (const ASREventRecord& record : records) {
        const std::optional<CaptionMark> mark = captionMark(record);
        const std::optional<ASREvent> event = record.asEvent();
        const bool isFinal = event && std::holds_alternative<ASREvent::Final>(event->value);
        if (!mark && (!event || (isStopping && !isFinal)))
            continue;
        host.advanceTo(record.t);
        if (mark) {
            applyMark(*mark, record, core, config);
            isStopping |= mark == CaptionMark::stopped;
        } else {
            core.ingest(*event);
        }
        if (mark == CaptionMark::ended)
            return outputOf(core, t0);
    }
    // There is no end mark: the session crashed or its log was cut. So show its last guess, too.
    host.runUntilIdle();
    return outputOf(core, t0);
}

} // namespace tessarune::CaptionReplay
