#include "Tessarune/refinement/FormerTranscript.h"

#include "Tessarune/refinement/FileSegmentCollector.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <system_error>

namespace tessarune {

namespace {

using FileResult = SpeechAnalyzerFileTranscriptionResult;
using ResultSegment = FileResult::Segment;
using FormerSentence = HistoryWordTimeline::Sentence;

/// The most seconds of sound that an encoder or decoder adds or removes, with a margin.
constexpr double lengthSlackSeconds = 1.0;
/// A time in an older timeline may be too large by at most this: it counts from the start of the
/// recorder, but the recording begins with the first sound of the device, which comes later.
constexpr double maximumLatenessSeconds = 3.0;
/// A former sentence is missing if the recognised segments cover less than this share of its time.
constexpr double minimumCoveredShare = 0.25;
/// Two recognisers may place one sentence this far apart.
constexpr double sameSentenceSeconds = 5;

/// An existing file that cannot be read must not count as missing: its content would be lost.
std::string readIfThere(FileSystem& files, const std::filesystem::path& path) {
    try {
        return files.read(path);
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::no_such_file_or_directory)
            return {};
        throw;
    }
}

/// The end of a sentence, but at least `moment` seconds after its start.
double endOf(const FormerSentence& sentence) {
    constexpr double moment = 0.1;
    return std::max(sentence.end, sentence.start + moment);
}

double overlap(const FormerSentence& sentence, const ResultSegment& segment) {
    return std::min(endOf(sentence), segment.end) - std::max(sentence.start, segment.start);
}

/// Whether nothing, or hardly anything, was recognised in the sentence's time.
bool isUncovered(const FormerSentence& sentence, const std::vector<ResultSegment>& segments) {
    double covered = 0;
    for (const ResultSegment& segment : segments)
        covered += std::max(0.0, overlap(sentence, segment));
    return covered < minimumCoveredShare * (endOf(sentence) - sentence.start);
}

bool isSaidNearby(const FormerSentence& sentence, const std::vector<ResultSegment>& segments) {
    const std::string key = normalizedSegmentKey(sentence.source);
    return std::ranges::any_of(segments, [&](const ResultSegment& segment) {
        return overlap(sentence, segment) > -sameSentenceSeconds &&
               (" " + normalizedSegmentKey(segment.text) + " ").find(" " + key + " ") !=
                   std::string::npos;
    });
}

ResultSegment segmentOf(const FormerSentence& sentence, const HistoryWordTimeline& timeline) {
    ResultSegment segment{sentence.source, sentence.start, sentence.end, {}};
    for (const auto& word : timeline.words) {
        const bool belongs = sentence.segmentID ? word.segmentID == sentence.segmentID
                                                : word.t >= sentence.start && word.t < sentence.end;
        if (!belongs)
            continue;
        if (!segment.words.empty())
            segment.words.back().end = word.t;
        segment.words.push_back({word.w, word.t, sentence.end});
    }
    return segment;
}

} // namespace

FormerTranscript FormerTranscript::of(const UUID& id,
                                      const std::optional<RecordingMetadata>& recording,
                                      const RecordingCatalog& catalog, FileSystem& files) {
    FormerTranscript former;
    former.sourceText = readIfThere(files, catalog.transcriptURL(id));
    former.timeline = HistoryWordTimeline::decoded(readIfThere(files, catalog.wordTimelineURL(id)));
    if (recording && lengthIsExact(*recording))
        former.recordedSeconds = recording->duration;
    return former;
}

/// The format of an import is only a file extension; that of a recording contains a "/".
bool FormerTranscript::lengthIsExact(const RecordingMetadata& recording) {
    return recording.audioFormat.value_or("").find('/') != std::string::npos;
}

bool FormerTranscript::wasHeard(double heardSeconds, bool isWhole) const {
    if (Text::trimmed(sourceText).empty())
        return true;
    if (!recordedSeconds && !timeline)
        return isWhole;
    const double heardUntil = heardSeconds + lengthSlackSeconds;
    if (recordedSeconds && *recordedSeconds > heardUntil)
        return false;
    const double allowedLateness = recordedSeconds ? maximumLatenessSeconds : lengthSlackSeconds;
    return !timeline || std::ranges::all_of(timeline->sentences, [&](const FormerSentence& each) {
        // Ends are not compared: a sentence that is still open when the session stops gets the time
        // of the stop as its end, which is later than the last sound.
        return each.start <= heardSeconds + allowedLateness;
    });
}

FileResult FormerTranscript::keptIn(const FileResult& refined) const {
    FileResult kept = refined.pulledBackToOnset();
    if (!timeline || Text::trimmed(sourceText).empty())
        return kept;
    const std::vector<ResultSegment> recognised = kept.segments;
    for (const FormerSentence& sentence : timeline->sentences) {
        if (!Text::trimmed(sentence.source).empty() && isUncovered(sentence, recognised) &&
            !isSaidNearby(sentence, recognised))
            kept.segments.push_back(segmentOf(sentence, *timeline));
    }
    if (kept.segments.size() > recognised.size())
        std::ranges::stable_sort(kept.segments, {}, &ResultSegment::start);
    return kept;
}

} // namespace tessarune
