#pragma once

#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/audio/SoundServer.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace tessarune {

/// A sound server whose one output plays a file: whoever records its monitor hears the file from
/// the beginning. So a file takes the same road through the program as live sound.
class FileSoundServer final : public SoundServer {
  public:
    /// How fast the file plays.
    struct Pace {
        /// As a player would.
        static Pace realTime() { return {}; }
        /// As fast as the listener goes: sound is given until it is `lead` seconds ahead of
        /// `heardSeconds`, which tells how much has been worked through. Called on the stream's
        /// executor.
        static Pace following(std::function<double()> heardSeconds, double lead) {
            return {std::move(heardSeconds), lead};
        }
        std::function<double()> heardSeconds;
        double lead = 0;
    };

    /// `onFinished` is called on the main queue when the file has been played, with the failure if
    /// it could not be read to its end (null otherwise).
    FileSoundServer(OpenMediaFile open, std::filesystem::path file, Pace pace,
                    std::function<void(std::exception_ptr)> onFinished);

    /// Opens the file; throws MediaFileError if it cannot be played at all.
    Task<void> connect(Executor resumeOn) override;
    SoundServerState state() const override { return SoundServerState::connected; }
    SoundDevices devices() const override;
    Subscription observe(Executor executor, std::function<void()> onChange) override;
    Task<std::unique_ptr<RecordStream>>
    openRecordStream(RecordRequest request, RecordHandlers handlers, Executor executor) override;
    Task<std::unique_ptr<PlaybackStream>> openPlaybackStream(PlaybackRequest request,
                                                             Executor executor) override;

  private:
    OpenMediaFile open_;
    std::filesystem::path file_;
    Pace pace_;
    std::function<void(std::exception_ptr)> onFinished_;
    AudioFormat format_;
};

} // namespace tessarune
