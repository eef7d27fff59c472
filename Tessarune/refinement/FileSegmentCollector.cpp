#include "Tessarune/refinement/FileSegmentCollector.h"

#include "TessaruneCore/segmentation/SentenceSegmenter.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextHash.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <span>
#include <utility>

namespace tessarune {

namespace {

using Segment = SpeechAnalyzerFileTranscriptionResult::Segment;
using Word = SpeechAnalyzerFileTranscriptionResult::Word;
using Span = std::pair<double, double>;

constexpr std::size_t previewCharacters = 120;
constexpr std::u32string_view ignoredInKeys = U".,?!;:\"'…—-，。？！；、";

std::int64_t number(std::size_t value) {
    return static_cast<std::int64_t>(value);
}

bool isTimedRun(const SpeechRun& run) {
    return run.audioStart && run.audioEnd && std::isfinite(*run.audioStart) &&
           std::isfinite(*run.audioEnd);
}

/// The tokens of all timed runs, each with the time of its run.
std::vector<Word> wordTimings(const SpeechResult& result) {
    std::vector<Word> words;
    for (const SpeechRun& run : result.runs) {
        if (!isTimedRun(run))
            continue;
        for (const auto token : Text::splitOnWhiteSpace(run.text))
            words.push_back({std::string(token), *run.audioStart, *run.audioEnd});
    }
    return words;
}

/// The span from the earliest start to the latest end of the timed runs; `nullopt` if no run
/// is timed.
std::optional<Span> audioSpan(const SpeechResult& result) {
    std::optional<Span> span;
    for (const SpeechRun& run : result.runs) {
        if (!isTimedRun(run))
            continue;
        span = span ? Span{std::min(span->first, *run.audioStart),
                           std::max(span->second, *run.audioEnd)}
                    : Span{*run.audioStart, *run.audioEnd};
    }
    return span;
}

/// `nullopt` if the time of the text is unknown.
std::optional<Segment> segmentOf(std::string text, std::span<const Word> words,
                                 const std::optional<Span>& fallback) {
    std::optional<Span> span = fallback;
    if (!words.empty())
        span = Span{words.front().start, std::max(words.front().end, words.back().end)};
    if (!span)
        return std::nullopt;
    return Segment{std::move(text), span->first, span->second, {words.begin(), words.end()}};
}

std::vector<std::string> namesOf(const SpeechTranscriberOptions& options) {
    std::vector<std::string> names;
    if (options.reporting.contains(SpeechReportingOption::volatileResults))
        names.emplace_back("reporting.volatileResults");
    if (options.reporting.contains(SpeechReportingOption::fastResults))
        names.emplace_back("reporting.fastResults");
    if (options.attributes.contains(SpeechAttributeOption::audioTimeRange))
        names.emplace_back("attribute.audioTimeRange");
    return names;
}

} // namespace

std::string recordTextPreview(std::string_view text) {
    return Text::truncated(text, previewCharacters, "…");
}

std::string normalizedSegmentKey(std::string_view text) {
    std::string kept;
    for (const char32_t codePoint : Text::codePoints(Text::lowercased(text))) {
        if (ignoredInKeys.find(codePoint) == std::u32string_view::npos)
            Text::append(kept, codePoint);
    }
    return Text::joined(Text::splitOnWhiteSpace(kept), " ");
}

FileSegmentCollector::FileSegmentCollector(Host& host, SpeechTranscriberOptions options,
                                           SpeechAnalyzerFileTranscriberDiagnostics diagnostics)
    : host_(host), options_(std::move(options)), diagnostics_(std::move(diagnostics)) {}

void FileSegmentCollector::add(const SpeechResult& result) {
    ++sequence_;
    const std::string text = result.text();
    if (diagnostics_.onResult) {
        const auto span = audioSpan(result);
        SpeechAnalyzerFileResultSummary summary;
        summary.sequence = sequence_;
        summary.receivedAt = host_.now();
        summary.localeIdentifier = options_.localeIdentifier;
        summary.isFinal = result.isFinal;
        summary.characterCount = number(Text::length(text));
        summary.utf8Count = number(text.size());
        summary.wordCount = number(Text::countOfWhiteSpaceSeparated(text));
        summary.runCount = number(result.runs.size());
        summary.timedRunCount = std::ranges::count_if(result.runs, isTimedRun);
        if (span) {
            summary.audioStartSeconds = span->first;
            summary.audioEndSeconds = span->second;
            summary.audioDurationSeconds = span->second - span->first;
        }
        summary.textHash = fnv1a64Hex(text);
        summary.textPreview = recordTextPreview(text);
        summary.requestedSpeechOptions = namesOf(options_);
        diagnostics_.onResult(summary);
    }
    std::vector<Segment> segments = split(result, text);
    if (result.isFinal)
        std::ranges::move(segments, std::back_inserter(final_));
    else
        volatile_ = std::move(segments);
}

std::vector<Segment> FileSegmentCollector::split(const SpeechResult& result,
                                                 const std::string& text) const {
    const std::vector<Word> words = wordTimings(result);
    const auto span = audioSpan(result);
    std::vector<std::string> pieces = SentenceSegmenter::pieces(text);
    const bool isUnsplit = pieces.empty();
    if (isUnsplit)
        pieces.emplace_back(Text::trimmed(text));
    std::span<const Word> unused(words);
    std::vector<Segment> segments;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const std::size_t tokens = Text::countOfWhiteSpaceSeparated(pieces[i]);
        const auto taken = isUnsplit ? unused : unused.first(std::min(tokens, unused.size()));
        unused = unused.subspan(taken.size());
        auto segment = segmentOf(pieces[i], taken, span);
        if (diagnostics_.onSplit) {
            SpeechAnalyzerFileSplitObservation observation;
            observation.resultSequence = sequence_;
            observation.resultIsFinal = result.isFinal;
            observation.pieceIndex = number(i);
            observation.pieceCount = number(pieces.size());
            observation.text = pieces[i];
            observation.characterCount = number(Text::length(pieces[i]));
            observation.wordCount = number(tokens);
            if (segment) {
                observation.startSeconds = segment->start;
                observation.endSeconds = segment->end;
            }
            observation.wordTimelineCount = number(taken.size());
            observation.resultTextHash = fnv1a64Hex(text);
            observation.splitStrategy =
                isUnsplit ? "fallback.wholeResult" : "sentenceSegmenter.fileFinal";
            diagnostics_.onSplit(observation);
        }
        if (segment)
            segments.push_back(std::move(*segment));
    }
    return segments;
}

FileSegmentCollector::Collected FileSegmentCollector::collected() const {
    Collected collected;
    collected.usedVolatileFallback = final_.empty() && !volatile_.empty();
    std::set<std::string> seen;
    for (const Segment& segment : final_.empty() ? volatile_ : final_) {
        std::string key = normalizedSegmentKey(segment.text);
        if (!key.empty() && seen.insert(std::move(key)).second)
            collected.segments.push_back(segment);
    }
    return collected;
}

} // namespace tessarune
