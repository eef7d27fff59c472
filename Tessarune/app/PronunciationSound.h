#pragma once

#include "Tessarune/platform/host/MemoryFile.h"
#include "Tessarune/playback/AudioPlayer.h"
#include "Tessarune/vocabulary/HistoryPronunciationAudioPlayer.h"
#include "TessaruneCore/observation/Observations.h"

#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// Plays pronunciations of words, one at a time. Each pronunciation is a sound file in memory. Main
/// queue; the host and the parts must outlive this object.
class PronunciationSound : public std::enable_shared_from_this<PronunciationSound> {
  public:
    /// Returns the function with which a `HistoryPronunciationAudioPlayer` plays sounds. The
    /// function owns a `PronunciationSound`.
    static HistoryPronunciationAudioPlayer::PlaySound make(Host& host, PlaybackParts parts);

    PronunciationSound(Host& host, PlaybackParts parts);
    PronunciationSound(const PronunciationSound&) = delete;

  private:
    Block play(const std::string& bytes, Block onEnd);
    void stop();
    void checkEnd();

    Host& host_;
    AudioPlayer player_;
    std::optional<MemoryFile> file_;
    Block onEnd_; ///< called when the current sound ends
    Observations observations_;
};

} // namespace tessarune
