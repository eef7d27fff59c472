#pragma once

#include "Tessarune/playback/AudioPlayer.h"
#include "Tessarune/playback/TranscriptRows.h"

#include <functional>
#include <optional>
#include <vector>

namespace tessarune {

/// A transcript with playback: the sentence and the word that are heard, and the effect of a click
/// on them.
///
/// Main queue. The player outlives it.
class TranscriptPlayback {
  public:
    explicit TranscriptPlayback(AudioPlayer& player);
    ~TranscriptPlayback();
    TranscriptPlayback(const TranscriptPlayback&) = delete;
    TranscriptPlayback& operator=(const TranscriptPlayback&) = delete;

    AudioPlayer& player() { return player_; }
    const TranscriptRows& rows() const { return rows_; }
    /// Shows another recording's transcript, or another text of this one, which may be playing.
    void show(TranscriptRows rows);

    /// The sentence that is heard now; absent before the first.
    Published<std::optional<std::size_t>> activeSentenceIndex;
    /// The word of that sentence, among `activeTokens`.
    Published<std::optional<std::size_t>> activeTokenIndex;
    /// A sentence that the user chose; it stays marked until playback has left it.
    Published<std::optional<std::size_t>> manualHighlightedSentenceIndex;

    /// The row that is marked.
    std::optional<std::size_t> highlightedIndex() const;
    const std::vector<SentenceToken>& activeTokens() const { return activeTokens_; }

    /// Hears just this sentence, again if it is playing. Nothing happens for a row without a time.
    void playSentence(std::size_t index) { playSentences(index, index); }
    /// The same with those that follow it, up to `last`.
    void playSentences(std::size_t first, std::size_t last);
    /// Goes on from a word of a sentence.
    void playFrom(const SentenceToken& token);
    /// Marks a sentence and moves there without playing.
    void focus(std::size_t index);
    /// Moves to the beginning of the next sentence (1), or of this one or, from its beginning, of
    /// the previous one (-1).
    void stepSentence(int direction);
    /// Starts or ends the repetition of the heard or chosen sentence.
    void toggleRepeat();

    /// Called when a sentence is about to be heard.
    std::function<void(const TranscriptRows::Sentence&)> onSentencePlayRequested;

  private:
    void update();
    double endOf(std::size_t index) const;

    AudioPlayer& player_;
    TranscriptRows rows_;
    bool isBoundToFormerRow_ = false; ///< what is played bounded was chosen among others
    std::vector<SentenceToken> activeTokens_;
    Published<double>::Token observer_;
};

} // namespace tessarune
