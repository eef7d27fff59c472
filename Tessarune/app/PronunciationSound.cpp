#include "Tessarune/app/PronunciationSound.h"

#include <system_error>
#include <utility>

namespace tessarune {

HistoryPronunciationAudioPlayer::PlaySound PronunciationSound::make(Host& host,
                                                                    PlaybackParts parts) {
    auto sound = std::make_shared<PronunciationSound>(host, std::move(parts));
    return [sound](const std::string& bytes, Block onEnd) {
        return sound->play(bytes, std::move(onEnd));
    };
}

PronunciationSound::PronunciationSound(Host& host, PlaybackParts parts)
    : host_(host), player_(host, std::move(parts)) {
    // Deferred: the player must not be used while it notifies its observers.
    const auto onChange = [this] {
        host_.post([weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->checkEnd();
        });
    };
    observations_.follow(player_.isPlaying, onChange);
    observations_.follow(player_.problem, onChange);
}

Block PronunciationSound::play(const std::string& bytes, Block onEnd) {
    stop();
    try {
        file_.emplace(bytes);
    } catch (const std::system_error&) {
        host_.post(std::move(onEnd));
        return [] {};
    }
    onEnd_ = std::move(onEnd);
    player_.load(file_->path());
    player_.startPlayback();
    return [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->stop();
    };
}

void PronunciationSound::stop() {
    onEnd_ = {};
    player_.teardown();
    file_.reset();
}

/// Ends the sound when it has been played. Also ends it at a problem, because a word that cannot be
/// played at once is of no use later.
void PronunciationSound::checkEnd() {
    if (!onEnd_ || (*player_.isPlaying && player_.problem->empty()))
        return;
    const Block onEnd = std::move(onEnd_);
    stop();
    onEnd();
}

} // namespace tessarune
