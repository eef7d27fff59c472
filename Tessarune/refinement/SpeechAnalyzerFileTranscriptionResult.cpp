#include "Tessarune/refinement/SpeechAnalyzerFileTranscriptionResult.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>

namespace tessarune {

namespace {

using FileResult = SpeechAnalyzerFileTranscriptionResult;
using Kind = HistoryWordTimeline::TimingKind;

double firstSound(const FileResult::Segment& segment) {
    return segment.words.empty() ? segment.start : segment.words.front().start;
}

} // namespace

std::string FileResult::sourceText() const {
    std::vector<std::string_view> lines;
    for (const Segment& segment : segments) {
        if (const auto text = Text::trimmed(segment.text); !text.empty())
            lines.push_back(text);
    }
    return Text::joined(lines, "\n");
}

std::optional<double> FileResult::firstSoundSeconds() const {
    if (segments.empty())
        return std::nullopt;
    return firstSound(*std::ranges::min_element(segments, {}, firstSound));
}

FileResult FileResult::pulledBackToOnset() const {
    FileResult pulled = *this;
    const double offset = std::max(0.0, firstSoundSeconds().value_or(0) - audioOnsetSeconds);
    const auto pull = [offset](double& time) { time = std::max(0.0, time - offset); };
    for (Segment& segment : pulled.segments) {
        pull(segment.start);
        pull(segment.end);
        for (Word& word : segment.words) {
            pull(word.start);
            pull(word.end);
        }
    }
    return pulled;
}

std::optional<HistoryWordTimeline>
FileResult::wordTimeline(std::string_view recognitionOptionID) const {
    HistoryWordTimeline timeline;
    timeline.recognitionOptionID = recognitionOptionID;
    for (const Segment& segment : pulledBackToOnset().segments) {
        timeline.sentences.push_back(
            {segment.text, segment.start, segment.end, std::nullopt,
             std::string(segment.words.empty() ? Kind::audioSegment : Kind::audioWord)});
        for (const Word& word : segment.words)
            timeline.words.push_back({word.text, word.start, std::nullopt});
    }
    if (timeline.isEmpty())
        return std::nullopt;
    timeline.timingKind = timeline.words.empty() ? Kind::audioSegment : Kind::audioWord;
    return timeline;
}

} // namespace tessarune
