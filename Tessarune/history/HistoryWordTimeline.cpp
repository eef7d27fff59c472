#include "Tessarune/history/HistoryWordTimeline.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace tessarune {

namespace {

using Timeline = HistoryWordTimeline;

/// The clock of one recording.
struct RecordingClock {
    double base; ///< seconds since 1970

    /// Recognisers report either the wall clock or seconds of the recording. The two differ by
    /// decades; the margin allows for a wall clock that was read shortly before the recording
    /// began.
    double relative(double time) const {
        constexpr double wallClockMargin = 60;
        return time >= base - wallClockMargin ? std::max(0.0, time - base) : time;
    }
    double sinceStart(double wallTime) const { return std::max(0.0, wallTime - base); }
};

bool isPositive(const std::optional<double>& time) {
    return time && *time > 0;
}

double segmentStart(const CaptionSegment& segment, std::span<const WordEvent> events,
                    const RecordingClock& clock) {
    std::optional<double> earliest;
    for (const auto& event : events) {
        if (!isPositive(event.audioStart))
            continue;
        const double start = clock.relative(*event.audioStart);
        earliest = earliest ? std::min(*earliest, start) : start;
    }
    if (earliest)
        return *earliest;
    if (segment.firstSeenAt)
        return clock.sinceStart(*segment.firstSeenAt);
    return clock.relative(segment.startedAt);
}

double segmentEnd(const CaptionSegment& segment, std::span<const WordEvent> events, double start,
                  const RecordingClock& clock) {
    std::optional<double> latest;
    for (const auto& event : events) {
        if (!isPositive(event.audioEnd))
            continue;
        const double end = clock.relative(*event.audioEnd);
        latest = latest ? std::max(*latest, end) : end;
    }
    if (!latest && segment.endedAt)
        latest = clock.relative(*segment.endedAt);
    return std::max(start, latest.value_or(start));
}

/// Appends the rows of a session to a timeline, one by one.
struct Builder {
    Timeline& timeline;
    RecordingClock clock;
    bool isApple;
    bool hasAudioTimes = false;

    void add(const CaptionSegment& segment, std::span<const WordEvent> events) {
        const auto text = Text::trimmed(segment.sourceText);
        if (text.empty())
            return;
        const double start = segmentStart(segment, events, clock);
        const double end = segmentEnd(segment, events, start, clock);
        const bool hasWordTimes =
            std::any_of(events.begin(), events.end(), [](const WordEvent& event) {
                return event.audioStart.has_value() && event.audioEnd.has_value();
            });
        timeline.sentences.push_back(
            {std::string(text), start, end, segment.id, std::string(sentenceKind(hasWordTimes))});

        const auto tokens = Text::splitOnWhiteSpace(text);
        for (std::size_t i = 0; i < tokens.size(); ++i) {
            const double part =
                tokens.size() < 2 ? 0.0
                                  : static_cast<double>(i) / static_cast<double>(tokens.size() - 1);
            const auto heard = i < events.size() ? eventTime(events[i]) : std::nullopt;
            timeline.words.push_back(
                {std::string(tokens[i]), heard.value_or(start + (end - start) * part), segment.id});
        }
    }

    std::string_view sentenceKind(bool hasWordTimes) const {
        if (hasWordTimes)
            return Timeline::TimingKind::audioWord;
        return isApple ? Timeline::TimingKind::audioSegment : Timeline::TimingKind::asrSegment;
    }

    std::string_view timelineKind() const {
        if (hasAudioTimes)
            return Timeline::TimingKind::audioWord;
        return isApple ? Timeline::TimingKind::segmentInterpolated
                       : Timeline::TimingKind::asrFirstSeen;
    }

    std::optional<double> eventTime(const WordEvent& event) {
        if (isPositive(event.audioStart)) {
            hasAudioTimes = true;
            return clock.relative(*event.audioStart);
        }
        if (!isApple && isPositive(event.firstSeenAt))
            return clock.sinceStart(*event.firstSeenAt);
        return std::nullopt;
    }
};

/// The index of the last of `count` ascending starts that is not after `time`.
template <typename Start>
std::optional<std::size_t> lastStarted(std::size_t count, double time, Start start) {
    std::size_t low = 0;
    std::size_t high = count;
    while (low < high) {
        const std::size_t middle = low + (high - low) / 2;
        if (start(middle) <= time) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    if (low == 0)
        return std::nullopt;
    return low - 1;
}

} // namespace

double HistoryWordTimeline::saneTime(double seconds) {
    constexpr double latest = 1e6; // a larger value is damage
    return std::isfinite(seconds) ? std::clamp(seconds, 0.0, latest) : 0;
}

std::optional<HistoryWordTimeline> Timeline::build(std::optional<double> recordingStartedAt,
                                                   std::string_view recognitionOptionID,
                                                   std::span<const CaptionSegment> segments,
                                                   const WordEvents& wordEvents) {
    if (!recordingStartedAt)
        return std::nullopt;
    HistoryWordTimeline timeline;
    timeline.recognitionOptionID = recognitionOptionID;
    Builder builder{timeline, RecordingClock{*recordingStartedAt},
                    Text::hasPrefix(recognitionOptionID, "apple-")};
    for (const auto& segment : segments) {
        const auto events = wordEvents.find(segment.id);
        builder.add(segment, events == wordEvents.end()
                                 ? std::span<const WordEvent>()
                                 : std::span<const WordEvent>(events->second));
    }
    if (timeline.isEmpty())
        return std::nullopt;
    timeline.timingKind = builder.timelineKind();
    return timeline;
}

Timeline Timeline::endingBy(double seconds) const {
    constexpr double longestStopSeconds = 3;
    Timeline bounded = *this;
    std::set<std::optional<UUID>> laterRows;
    for (Sentence& sentence : bounded.sentences) {
        if (sentence.start > seconds + longestStopSeconds) {
            laterRows.insert(sentence.segmentID);
            continue;
        }
        sentence.start = std::min(sentence.start, seconds);
        sentence.end = std::min(sentence.end, seconds);
    }
    for (Word& word : bounded.words) {
        if (!laterRows.contains(word.segmentID))
            word.t = std::min(word.t, seconds);
    }
    return bounded;
}

std::vector<Timeline::Sentence> Timeline::derivedSentencesFromWords() const {
    std::vector<Sentence> derived;
    for (auto first = words.begin(); first != words.end();) {
        const auto last = std::find_if(first, words.end(), [&](const Word& word) {
            return word.segmentID != first->segmentID;
        });
        std::vector<std::string_view> tokens;
        for (auto word = first; word != last; ++word)
            tokens.push_back(word->w);
        derived.push_back({Text::joined(tokens, " "), first->t,
                           std::max(first->t, std::prev(last)->t), first->segmentID,
                           std::string(TimingKind::derivedFromWords)});
        first = last;
    }
    return derived;
}

std::vector<double> Timeline::sentenceStarts() const {
    std::vector<double> starts;
    for (const auto& sentence : sentences.empty() ? derivedSentencesFromWords() : sentences)
        starts.push_back(sentence.start);
    return starts;
}

std::optional<std::size_t> Timeline::activeSentenceIndex(double time) const {
    // Called many times a second during playback: sentences are searched without building a list.
    if (!sentences.empty())
        return lastStarted(sentences.size(), time,
                           [&](std::size_t i) { return sentences[i].start; });
    const auto starts = sentenceStarts();
    return lastStarted(starts.size(), time, [&](std::size_t i) { return starts[i]; });
}

} // namespace tessarune
