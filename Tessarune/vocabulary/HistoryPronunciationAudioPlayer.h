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
    /// Plays the bytes of a sound file and returns a function that stops it. `onEnd` is called once
    /// on the main queue, at the end or if the bytes cannot be played, but never after a stop or an
    /// exception.
    using PlaySound = std::function<Block(std::string bytes, Block onEnd)>;

    /// The host must outlive this.
    HistoryPronunciationAudioPlayer(Host& host, WebFetch fetch, PlaySound playSound);
    ~HistoryPronunciationAudioPlayer();
    HistoryPronunciationAudioPlayer(const HistoryPronunciationAudioPlayer&) = delete;
    HistoryPronunciationAudioPlayer& operator=(const HistoryPronunciationAudioPlayer&) = delete;

    /// Fetches the word's sound and plays it; replaces a request that is in progress. Stops the
    /// sound if this word is playing already. Does nothing if no sound is found.
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
