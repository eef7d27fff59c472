#include "Tessarune/speech/AppleResultMapping.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <cmath>

namespace tessarune::AppleResultMapping {

namespace {

using Raw = AppleSpeechAnalyzerRawResultRecord;

constexpr std::size_t previewLimit = 220;

bool isFinite(const std::optional<double>& value) {
    return value && std::isfinite(*value);
}

template <typename Run>
bool isTimed(const Run& run) {
    return isFinite(run.audioStart) && isFinite(run.audioEnd);
}

std::optional<double> duration(std::optional<double> start, std::optional<double> end) {
    return start && end ? std::optional(*end - *start) : std::nullopt;
}

std::int64_t count(std::size_t value) {
    return static_cast<std::int64_t>(value);
}

std::string preview(std::string_view text) {
    return Text::truncated(text, previewLimit, "…");
}

std::string describe(const SpeechRun& run) {
    std::string text = "\"" + run.text + "\"";
    if (isTimed(run))
        text += " [" + Text::shortest(*run.audioStart) + ", " + Text::shortest(*run.audioEnd) + "]";
    if (isFinite(run.confidence))
        text += " confidence " + Text::shortest(*run.confidence);
    return text;
}

std::string describe(const std::vector<SpeechRun>& runs) {
    std::vector<std::string> parts;
    parts.reserve(runs.size());
    for (const auto& run : runs)
        parts.push_back(describe(run));
    return Text::joined(parts, ", ");
}

std::vector<Raw::MirrorChild> mirror(const SpeechResult& result) {
    return {{"runs", "[SpeechRun]", preview(describe(result.runs))},
            {"isFinal", "Bool", result.isFinal ? "true" : "false"},
            {"alternatives", "[String]", preview(Text::joined(result.alternatives, " | "))}};
}

void setTimes(Raw::Run& record, const SpeechRun& run, const AnalyzerEngineSnapshot& snapshot) {
    constexpr std::int64_t scale = 1000;
    const auto value = [](double seconds) {
        return static_cast<std::int64_t>(std::llround(seconds * static_cast<double>(scale)));
    };
    record.hasAudioTimeRange = true;
    record.audioStartSeconds = run.audioStart;
    record.audioEndSeconds = run.audioEnd;
    record.audioDurationSeconds = duration(run.audioStart, run.audioEnd);
    record.audioStartCMTimeValue = value(*run.audioStart);
    record.audioEndCMTimeValue = value(*run.audioEnd);
    record.audioDurationCMTimeValue = *record.audioEndCMTimeValue - *record.audioStartCMTimeValue;
    record.audioStartCMTimeScale = scale;
    record.audioEndCMTimeScale = scale;
    record.audioDurationCMTimeScale = scale;
    record.mappedStartEpochSeconds = snapshot.wallTime(run.audioStart);
    record.mappedEndEpochSeconds = snapshot.wallTime(run.audioEnd);
}

std::vector<Raw::Run> rawRuns(const std::vector<SpeechRun>& runs,
                              const AnalyzerEngineSnapshot& snapshot) {
    std::vector<Raw::Run> records;
    std::int64_t position = 0;
    for (const auto& run : runs) {
        Raw::Run record;
        record.index = count(records.size());
        record.text = run.text;
        record.characterCount = count(Text::length(run.text));
        record.characterStart = position;
        record.characterEnd = position += record.characterCount;
        record.utf8Count = count(run.text.size());
        record.wordCount = count(Text::countOfWhiteSpaceSeparated(run.text));
        record.hasConfidence = isFinite(run.confidence);
        if (record.hasConfidence)
            record.confidence = run.confidence;
        if (isTimed(run))
            setTimes(record, run, snapshot);
        record.debugDescription = describe(run);
        records.push_back(std::move(record));
    }
    return records;
}

/// The recogniser returns alternatives as plain texts, without runs.
std::vector<Raw::Alternative> rawAlternatives(const std::vector<std::string>& texts) {
    std::vector<Raw::Alternative> records;
    for (const auto& text : texts) {
        Raw::Alternative record;
        record.index = count(records.size());
        record.text = text;
        record.characterCount = count(Text::length(text));
        record.wordCount = count(Text::countOfWhiteSpaceSeparated(text));
        records.push_back(std::move(record));
    }
    return records;
}

Raw::EngineState engineState(const RecordContext& context) {
    const auto& snapshot = context.snapshot;
    return {snapshot.generation,
            snapshot.audioEpoch,
            snapshot.latestAudioTime,
            snapshot.segmentStart,
            snapshot.revision,
            context.hasPendingPartial,
            context.partialCoalesceWindowSeconds,
            context.analyzerInputChunkSeconds};
}

} // namespace

std::vector<RunTiming> runTimings(const std::vector<SpeechRun>& runs) {
    std::vector<RunTiming> timings;
    timings.reserve(runs.size());
    for (const auto& run : runs)
        timings.push_back({run.audioStart, run.audioEnd, run.confidence});
    return timings;
}

RunAggregate aggregate(const std::vector<RunTiming>& runs) {
    RunAggregate result;
    result.runCount = count(runs.size());
    double confidenceSum = 0;
    for (const auto& run : runs) {
        if (isTimed(run)) {
            ++result.timedRunCount;
            result.audioStart =
                std::min(result.audioStart.value_or(*run.audioStart), *run.audioStart);
            result.audioEnd = std::max(result.audioEnd.value_or(*run.audioEnd), *run.audioEnd);
        }
        if (isFinite(run.confidence)) {
            ++result.confidenceRunCount;
            confidenceSum += *run.confidence;
            result.minConfidence =
                std::min(result.minConfidence.value_or(*run.confidence), *run.confidence);
        }
    }
    if (result.confidenceRunCount > 0)
        result.avgConfidence = confidenceSum / static_cast<double>(result.confidenceRunCount);
    return result;
}

TimingInfo timingInfo(const std::vector<SpeechRun>& runs, const AnalyzerEngineSnapshot& snapshot) {
    TimingInfo info;
    std::vector<ASRWordTiming> words;
    for (const auto& run : runs) {
        if (!isTimed(run))
            continue;
        const double start = *run.audioStart;
        const double end = *run.audioEnd;
        ++info.timedRunCount;
        info.span = info.span ? std::pair(std::min(info.span->first, start),
                                          std::max(info.span->second, end))
                              : std::pair(start, end);
        if (const auto word = Text::trimmed(run.text); !word.empty())
            words.push_back(
                {std::string(word), snapshot.wallTimeOf(start), snapshot.wallTimeOf(end)});
    }
    if (!words.empty())
        info.words = std::move(words);
    return info;
}

AppleFinalReconcileCandidate candidate(const SpeechResult& result, std::string text,
                                       std::int64_t sequence, double receivedAt,
                                       const AnalyzerEngineSnapshot& snapshot) {
    const RunAggregate runs = aggregate(runTimings(result.runs));
    AppleFinalReconcileCandidate value;
    value.sequence = sequence;
    value.receivedAt = receivedAt;
    value.isFinal = result.isFinal;
    value.setText(std::move(text));
    value.runCount = runs.runCount;
    value.timedRunCount = runs.timedRunCount;
    value.confidenceRunCount = runs.confidenceRunCount;
    value.minConfidence = runs.minConfidence;
    value.avgConfidence = runs.avgConfidence;
    value.audioStartSeconds = runs.audioStart;
    value.audioEndSeconds = runs.audioEnd;
    value.latestAudioTimeSeconds = snapshot.latestAudioTime;
    value.requestedSpeechOptions = snapshot.requestedSpeechOptions;
    return value;
}

AppleSpeechAnalyzerSummaryRecord summaryRecord(const SpeechResult& result,
                                               const AppleFinalReconcileCandidate& candidate,
                                               const RecordContext& context) {
    AppleSpeechAnalyzerSummaryRecord record;
    record.sequence = candidate.sequence;
    record.receivedAt = candidate.receivedAt;
    record.localeIdentifier = context.localeIdentifier;
    record.isFinal = candidate.isFinal;
    record.characterCount = candidate.characterCount;
    record.utf8Count = count(candidate.text.size());
    record.wordCount = candidate.wordCount;
    record.runCount = candidate.runCount;
    record.timedRunCount = candidate.timedRunCount;
    record.confidenceRunCount = candidate.confidenceRunCount;
    record.minConfidence = candidate.minConfidence;
    record.avgConfidence = candidate.avgConfidence;
    record.alternativeCount = count(result.alternatives.size());
    record.audioStartSeconds = candidate.audioStartSeconds;
    record.audioEndSeconds = candidate.audioEndSeconds;
    record.audioDurationSeconds = duration(candidate.audioStartSeconds, candidate.audioEndSeconds);
    record.mappedStartEpochSeconds = context.snapshot.wallTime(candidate.audioStartSeconds);
    record.mappedEndEpochSeconds = context.snapshot.wallTime(candidate.audioEndSeconds);
    record.latestAudioTimeSeconds = candidate.latestAudioTimeSeconds;
    record.revisionBeforeTessaruneProcessing = context.snapshot.revision;
    record.pendingPartialBeforeTessaruneProcessing = context.hasPendingPartial;
    record.textHash = candidate.textHash;
    record.textPreview = candidate.textPreview;
    record.requestedSpeechOptions = candidate.requestedSpeechOptions;
    return record;
}

AppleSpeechAnalyzerRawResultRecord rawResultRecord(const SpeechResult& result,
                                                   const AppleFinalReconcileCandidate& candidate,
                                                   const RecordContext& context) {
    Raw record;
    record.sequence = candidate.sequence;
    record.receivedAt = candidate.receivedAt;
    record.localeIdentifier = context.localeIdentifier;
    record.resultType = "SpeechResult";
    record.resultDebugDescription = std::string(result.isFinal ? "final" : "volatile") + " of " +
                                    std::to_string(result.runs.size()) +
                                    " runs: " + describe(result.runs);
    record.resultMirrorChildren = mirror(result);
    record.textType = "[SpeechRun]";
    record.textDebugDescription = describe(result.runs);
    record.isFinal = result.isFinal;
    record.text = result.text();
    record.characterCount = count(Text::length(record.text));
    record.utf8Count = count(record.text.size());
    record.wordCount = count(Text::countOfWhiteSpaceSeparated(record.text));
    record.runCount = candidate.runCount;
    record.timedRunCount = candidate.timedRunCount;
    record.runs = rawRuns(result.runs, context.snapshot);
    record.alternativeCount = count(result.alternatives.size());
    record.alternatives = rawAlternatives(result.alternatives);
    record.engineState = engineState(context);
    record.requestedSpeechOptions = candidate.requestedSpeechOptions;
    record.note = "As returned by the recogniser, before any processing.";
    return record;
}

} // namespace tessarune::AppleResultMapping
