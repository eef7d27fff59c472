#pragma once

#include "Tessarune/vocabulary/VocabularyTypes.h"
#include "Tessarune/vocabulary/WebFetch.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/observation/Published.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// Plays the pronunciation of words. Only `play` uses the network. Main queue; fetching blocks the
/// queue "Tessarune.Pronunciation".
class HistoryPronunciationAudioPlayer {
  public:
    /// Plays the bytes of a sound file and returns a function that stops the sound. `onEnd` is
    /// called once on the main queue, at the end or if the bytes cannot be played. It is not called
    /// if the sound was stopped, or if this call throws.
    using PlaySound = std::function<Block(std::string bytes, Block onEnd)>;

    /// The host must outlive this.
    HistoryPronunciationAudioPlayer(Host& host, WebFetch fetch, PlaySound playSound);
    ~HistoryPronunciationAudioPlayer();
    HistoryPronunciationAudioPlayer(const HistoryPronunciationAudioPlayer&) = delete;
    HistoryPronunciationAudioPlayer& operator=(const HistoryPronunciationAudioPlayer&) = delete;

    /// If this word is playing, stops it. Otherwise fetches the word's sound and plays it, in place
    /// of an earlier request; plays nothing if no sound is found.
    void play(VocabularyPronunciationSource source, std::string_view word);
    void stop();

    /// The value of `activeKey` and `loadingKey` for a word.
    static std::string key(VocabularyPronunciationSource source, std::string_view word);

    /// The key of the word that is playing.
    const Published<std::optional<std::string>>& activeKey() const;
    /// The key of the word whose sound is being fetched.
    const Published<std::optional<std::string>>& loadingKey() const;

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace tessarune
