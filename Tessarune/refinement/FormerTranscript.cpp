#include "Tessarune/refinement/FormerTranscript.h"

#include "Tessarune/refinement/FileSegmentCollector.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <system_error>

namespace tessarune {

namespace {

using FileResult = SpeechAnalyzerFileTranscriptionResult;
using FormerSegment = FileResult::Segment;
using FormerSentence = HistoryWordTimeline::Sentence;

/// What encoders and decoders add to a file or take from it, with room to spare.
constexpr double lengthSlackSeconds = 1.0;
/// A sentence is missing where others take up less of its time than this.
constexpr double mostCoveredShare = 0.25;
/// Two recognisers may place one sentence so far apart.
constexpr double sameSentenceSeconds = 5;

std::string readIfThere(FileSystem& files, const std::filesystem::path& path) {
    try {
        return files.exists(path) ? files.read(path) : std::string();
    } catch (const std::system_error&) {
        return {};
    }
}

double overlap(const FormerSentence& sentence, const FormerSegment& segment) {
    return std::min(sentence.end, segment.end) - std::max(sentence.start, segment.start);
}

/// Whether nothing was recognised where the sentence was.
bool isUncovered(const FormerSentence& sentence, const std::vector<FormerSegment>& segments) {
    double covered = 0;
    for (const FormerSegment& segment : segments)
        covered += std::max(0.0, overlap(sentence, segment));
    return sentence.end > sentence.start &&
           covered < mostCoveredShare * (sentence.end - sentence.start);
}

bool isSaidNearby(const FormerSentence& sentence, const std::vector<FormerSegment>& segments) {
    const std::string key = normalizedSegmentKey(sentence.source);
    return std::ranges::any_of(segments, [&](const FormerSegment& segment) {
        return overlap(sentence, segment) > -sameSentenceSeconds &&
               (" " + normalizedSegmentKey(segment.text) + " ").find(" " + key + " ") !=
                   std::string::npos;
    });
}

FormerSegment segmentOf(const FormerSentence& sentence, const HistoryWordTimeline& timeline) {
    FormerSegment segment{sentence.source, sentence.start, sentence.end, {}};
    for (const auto& word : timeline.words) {
        const bool isOurs = sentence.segmentID ? word.segmentID == sentence.segmentID
                                               : word.t >= sentence.start && word.t < sentence.end;
        if (!isOurs)
            continue;
        if (!segment.words.empty())
            segment.words.back().end = word.t;
        segment.words.push_back({word.w, word.t, sentence.end});
    }
    return segment;
}

} // namespace

FormerTranscript FormerTranscript::of(const RecordingMetadata& recording,
                                      const RecordingCatalog& catalog, FileSystem& files) {
    FormerTranscript former;
    former.sourceText = readIfThere(files, catalog.transcriptURL(recording.id));
    former.timeline =
        HistoryWordTimeline::decoded(readIfThere(files, catalog.wordTimelineURL(recording.id)));
    if (lengthIsExact(recording))
        former.recordedSeconds = recording.duration;
    return former;
}

/// The format of an import is its bare extension.
bool FormerTranscript::lengthIsExact(const RecordingMetadata& recording) {
    return recording.audioFormat.value_or("").find('/') != std::string::npos;
}

bool FormerTranscript::wasHeard(double heardSeconds) const {
    if (Text::trimmed(sourceText).empty())
        return true;
    const double through = heardSeconds + lengthSlackSeconds;
    if (recordedSeconds && *recordedSeconds > through)
        return false;
    return !timeline || std::ranges::all_of(timeline->sentences, [&](const FormerSentence& each) {
        return each.end <= through;
    });
}

FileResult FormerTranscript::keptIn(const FileResult& refined) const {
    FileResult kept = refined.pulledBackToOnset();
    if (!timeline || Text::trimmed(sourceText).empty())
        return kept;
    const std::vector<FormerSegment> recognised = kept.segments;
    for (const FormerSentence& sentence : timeline->sentences) {
        if (!Text::trimmed(sentence.source).empty() && isUncovered(sentence, recognised) &&
            !isSaidNearby(sentence, recognised))
            kept.segments.push_back(segmentOf(sentence, *timeline));
    }
    if (kept.segments.size() > recognised.size())
        std::ranges::stable_sort(kept.segments, {}, &FormerSegment::start);
    return kept;
}

} // namespace tessarune
