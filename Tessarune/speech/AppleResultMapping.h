#pragma once

#include "Tessarune/speech/AnalyzerEngineSnapshot.h"
#include "Tessarune/speech/AppleFinalReconcileRecord.h"
#include "Tessarune/speech/AppleSpeechAnalyzerRawResultRecord.h"
#include "Tessarune/speech/AppleSpeechAnalyzerSummaryRecord.h"
#include "Tessarune/speech/SpeechTranscriber.h"
#include "TessaruneCore/recognition/ASREvent.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Converts the recogniser's results to the program's own values. Pure functions, any thread.
namespace tessarune::AppleResultMapping {

struct RunTiming {
    std::optional<double> audioStart;
    std::optional<double> audioEnd;
    std::optional<double> confidence;
};

/// The summary of the runs of one result.
struct RunAggregate {
    std::int64_t runCount = 0;
    std::int64_t timedRunCount = 0; ///< runs whose two times are present and finite
    std::optional<double> audioStart;
    std::optional<double> audioEnd;
    std::int64_t confidenceRunCount = 0;
    std::optional<double> minConfidence;
    std::optional<double> avgConfidence;
};

/// The words of a result and the span of sound that they cover.
struct TimingInfo {
    std::optional<std::pair<double, double>> span;   ///< audio times
    std::optional<std::vector<ASRWordTiming>> words; ///< host times; absent if no word is timed
    std::int64_t timedRunCount = 0;
};

std::vector<RunTiming> runTimings(const std::vector<SpeechRun>& runs);
RunAggregate aggregate(const std::vector<RunTiming>& runs);
TimingInfo timingInfo(const std::vector<SpeechRun>& runs, const AnalyzerEngineSnapshot& snapshot);

/// `text` is the result's text, trimmed.
AppleFinalReconcileCandidate candidate(const SpeechResult& result, std::string text,
                                       std::int64_t sequence, double receivedAt,
                                       const AnalyzerEngineSnapshot& snapshot);

/// What a record needs besides the result.
struct RecordContext {
    std::string localeIdentifier;
    AnalyzerEngineSnapshot snapshot; ///< before the result is processed
    bool hasPendingPartial = false;  ///< a partial is waiting to be sent
    double partialCoalesceWindowSeconds = 0;
    double analyzerInputChunkSeconds = 0;
};

AppleSpeechAnalyzerSummaryRecord summaryRecord(const SpeechResult& result,
                                               const AppleFinalReconcileCandidate& candidate,
                                               const RecordContext& context);
AppleSpeechAnalyzerRawResultRecord rawResultRecord(const SpeechResult& result,
                                                   const AppleFinalReconcileCandidate& candidate,
                                                   const RecordContext& context);

} // namespace tessarune::AppleResultMapping
