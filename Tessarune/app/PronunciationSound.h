#pragma once

#include "Tessarune/platform/host/MemoryFile.h"
#include "Tessarune/playback/AudioPlayer.h"
#include "Tessarune/vocabulary/HistoryPronunciationAudioPlayer.h"
#include "TessaruneCore/observation/Observations.h"

#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// Plays the sounds of words, which are bytes from the network, one at a time. Main queue; the host
/// and the parts outlive it.
class PronunciationSound : public std::enable_shared_from_this<PronunciationSound> {
  public:
    static HistoryPronunciationAudioPlayer::PlaySound make(Host& host, PlaybackParts parts);

    PronunciationSound(Host& host, PlaybackParts parts);
    PronunciationSound(const PronunciationSound&) = delete;

  private:
    Block play(const std::string& bytes, Block onEnd);
    void stop();
    void lookWhetherOver();

    Host& host_;
    AudioPlayer player_;
    std::optional<MemoryFile> file_;
    Block onEnd_; ///< of the sound that is being heard
    Observations observations_;
};

} // namespace tessarune
