#pragma once

#include "Tessarune/playback/AudioPlayer.h"
#include "Tessarune/playback/TimedSentences.h"

#include <functional>
#include <optional>
#include <vector>

namespace tessarune {

/// A transcript with playback: which sentence and word are heard, and what a click on a sentence or
/// a word does.
///
/// Main queue. The player must outlive it.
class TranscriptPlayback {
  public:
    explicit TranscriptPlayback(AudioPlayer& player);
    ~TranscriptPlayback();
    TranscriptPlayback(const TranscriptPlayback&) = delete;
    TranscriptPlayback& operator=(const TranscriptPlayback&) = delete;

    AudioPlayer& player() { return player_; }
    const TimedSentences& sentences() const { return sentences_; }
    /// Shows the transcript of another recording, or another text of the same recording. The
    /// recording may be playing.
    void show(TimedSentences sentences);

    /// The sentence that is heard now; `nullopt` before the first.
    Published<std::optional<std::size_t>> activeSentenceIndex;
    /// The word that is heard now, an index into `activeTokens`; `nullopt` before the first.
    Published<std::optional<std::size_t>> activeTokenIndex;
    /// A sentence that the user chose. It stays highlighted until `show`, or until the player plays
    /// without being limited to sentences.
    Published<std::optional<std::size_t>> manualHighlightedSentenceIndex;

    /// The sentence to highlight: the chosen one; without a choice, the one that is heard.
    std::optional<std::size_t> highlightedIndex() const;
    const std::vector<SentenceToken>& activeTokens() const { return activeTokens_; }

    /// Plays only the sentences from `first` to `last`. Does nothing if there is no sentence
    /// `first`.
    void playSentences(std::size_t first, std::size_t last);
    /// Plays from a word of a sentence on.
    void playFrom(const SentenceToken& token);
    /// Highlights a sentence and moves to its beginning without starting playback.
    void focus(std::size_t index);
    /// With 1, moves to the beginning of the next sentence; with -1, to the beginning of the
    /// current sentence, or of the previous sentence if the current one has just begun.
    void stepSentence(int direction);
    /// Starts or ends the repetition of the heard or chosen sentence.
    void toggleRepeat();

    /// Called before a chosen sentence is played.
    std::function<void(const TimedSentences::Sentence&)> onSentencePlayRequested;

  private:
    void update();
    double endOf(std::size_t index) const;

    AudioPlayer& player_;
    TimedSentences sentences_;
    /// The player's limit, if any, refers to the transcript before the last `show`.
    bool isLimitOutdated_ = false;
    std::vector<SentenceToken> activeTokens_;
    Published<double>::Token observer_;
};

} // namespace tessarune
