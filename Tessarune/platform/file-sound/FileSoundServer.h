#pragma once

#include "Tessarune/audio/AudioConverter.h"
#include "Tessarune/audio/MediaFile.h"
#include "Tessarune/audio/SoundServer.h"
#include "TessaruneCore/host/Host.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace tessarune {

/// A sound server whose single output plays a file or a pipe: a stream that records its monitor
/// starts at the beginning of the file. Thus a file takes the same path through the program as live
/// sound.
///
/// The file is opened and read on a separate queue, because both may block: on a slow disk, or on a
/// pipe without a writer. Closing a stream cancels a blocked read without waiting for it.
class FileSoundServer final : public SoundServer {
  public:
    /// How fast the file plays.
    struct Pace {
        /// At real speed.
        static Pace realTime() { return {}; }
        /// As fast as the listener: delivers sound until it is `lead` seconds ahead of the
        /// listener's progress, which `heardSeconds` returns. `heardSeconds` is called on the
        /// stream's executor.
        static Pace following(std::function<double()> heardSeconds, double lead) {
            return {std::move(heardSeconds), lead};
        }
        std::function<double()> heardSeconds; ///< empty at real speed
        double lead = 0;
    };
    /// The functions of the media library that the server uses.
    struct Media {
        OpenAwaitedMediaFile open;
        MakeAudioConverter makeConverter;
    };

    /// `onFinished` is called on the main queue when the file has been played, with the failure if
    /// it could not be read to its end (null otherwise). It is not called if the stream is closed
    /// before that.
    FileSoundServer(Host& host, Media media, std::filesystem::path file, Pace pace,
                    std::function<void(std::exception_ptr)> onFinished);
    ~FileSoundServer() override;

    /// Opens the file, once; throws MediaFileError if it cannot be played at all.
    Task<void> connect(Executor resumeOn) override;
    /// Abandons the file: blocked calls and later attempts to open it fail with MediaFileError
    /// `cancelled`. Any thread.
    void giveUp();
    /// The length of the file in seconds; `nullopt` before `connect` or if it is unknown.
    std::optional<double> duration() const;

    SoundServerState state() const override { return SoundServerState::connected; }
    SoundDevices devices() const override;
    Subscription observe(Executor executor, std::function<void()> onChange) override;
    /// The first stream plays the file that `connect` opened; each later one opens it again.
    Task<std::unique_ptr<RecordStream>>
    openRecordStream(RecordRequest request, RecordHandlers handlers, Executor executor) override;
    Task<std::unique_ptr<PlaybackStream>> openPlaybackStream(PlaybackRequest request,
                                                             Executor executor) override;

  private:
    class Source;
    std::shared_ptr<Source> source_;
    Pace pace_;
    std::function<void(std::exception_ptr)> onFinished_;
};

} // namespace tessarune
