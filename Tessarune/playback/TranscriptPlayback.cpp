#include "Tessarune/playback/TranscriptPlayback.h"

#include <utility>

namespace tessarune {

namespace {

/// A step back goes to the beginning of the current sentence if more than this many seconds of the
/// sentence were heard, and otherwise to the previous sentence.
constexpr double beginningSeconds = 1.5;

} // namespace

TranscriptPlayback::TranscriptPlayback(AudioPlayer& player)
    : player_(player), observer_(player.currentTime.onDidChange([this](double) { update(); })) {}

TranscriptPlayback::~TranscriptPlayback() {
    player_.currentTime.remove(observer_);
}

void TranscriptPlayback::show(TimedSentences sentences) {
    sentences_ = std::move(sentences);
    isLimitOutdated_ = true;
    manualHighlightedSentenceIndex = std::nullopt;
    activeTokens_.clear();
    activeTokenIndex = std::nullopt;
    activeSentenceIndex = std::nullopt;
    update();
}

void TranscriptPlayback::update() {
    const double time = *player_.currentTime;
    const auto index = sentences_.activeSentenceIndex(time);
    if (*manualHighlightedSentenceIndex && *player_.isPlaying &&
        !*player_.boundedPlaybackSentenceIndex)
        manualHighlightedSentenceIndex = std::nullopt;
    if (index != *activeSentenceIndex) {
        activeTokenIndex = std::nullopt;
        activeTokens_ = index ? sentences_.tokens(*index) : std::vector<SentenceToken>();
        activeSentenceIndex = index;
    }
    if (const auto token = TimedSentences::activeTokenIndex(activeTokens_, time);
        token != *activeTokenIndex)
        activeTokenIndex = token;
}

std::optional<std::size_t> TranscriptPlayback::highlightedIndex() const {
    return *manualHighlightedSentenceIndex ? *manualHighlightedSentenceIndex : *activeSentenceIndex;
}

double TranscriptPlayback::endOf(std::size_t index) const {
    return sentences_.sentenceEnd(index).value_or(0);
}

void TranscriptPlayback::playSentences(std::size_t first, std::size_t last) {
    const TimedSentences::Sentence* sentence = sentences_.sentenceTiming(first);
    if (!sentence)
        return;
    if (onSentencePlayRequested)
        onSentencePlayRequested(*sentence);
    manualHighlightedSentenceIndex = first;
    isLimitOutdated_ = false;
    player_.playBounded(first, sentence->start, endOf(last));
}

void TranscriptPlayback::playFrom(const SentenceToken& token) {
    player_.seek(token.start);
    player_.startPlayback();
}

void TranscriptPlayback::focus(std::size_t index) {
    const TimedSentences::Sentence* sentence = sentences_.sentenceTiming(index);
    if (!sentence)
        return;
    player_.seek(sentence->start);
    manualHighlightedSentenceIndex = index;
}

void TranscriptPlayback::stepSentence(int direction) {
    const auto active = *activeSentenceIndex;
    if (direction < 0 && !active)
        return player_.seek(0);
    std::size_t index = active ? *active : 0;
    if (direction > 0 && active) {
        ++index;
    } else if (active) {
        const double start = sentences_.sentenceTiming(index)->start;
        const bool isInside = *player_.currentTime > start + beginningSeconds;
        // Of several sentences that begin together, the last is the active one.
        while (!isInside && index > 0 && sentences_.sentenceTiming(index)->start >= start)
            --index;
    }
    if (const TimedSentences::Sentence* sentence = sentences_.sentenceTiming(index))
        player_.seek(sentence->start);
}

void TranscriptPlayback::toggleRepeat() {
    if (*player_.repeatsBoundedPlayback) {
        player_.clearBounds();
        return;
    }
    const auto bounded = *player_.boundedPlaybackSentenceIndex;
    const auto index = bounded && !isLimitOutdated_ ? bounded : highlightedIndex();
    if (!index)
        return;
    isLimitOutdated_ = false;
    if (const TimedSentences::Sentence* sentence = sentences_.sentenceTiming(*index))
        player_.repeatBounded(*index, sentence->start, endOf(*index));
}

} // namespace tessarune
