#include "Tessarune/app/DemoSound.h"

#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/model-store/ProgramPlaces.h"
#include "TessaruneCore/text/Localization.h"

#include <memory>
#include <utility>

namespace tessarune {

DemoSound::DemoSound(Host& host) : host_(host), server_(private_.address()) {}

Task<void> DemoSound::play() {
    const Executor main = Executor::main(host_);
    const std::unique_ptr<MediaFile> file = openFFmpegMediaFile(ProgramPlaces::sampleSpeech());
    PlaybackRequest request{PrivateSoundServer::outputID, file->format(),
                            localized("sample speech")};
    Task<std::unique_ptr<PlaybackStream>> opening =
        server_.openPlaybackStream(std::move(request), main);
    const std::unique_ptr<PlaybackStream> stream = co_await opening;
    while (AudioBufferPtr block = file->read()) {
        Task<void> writing = stream->write(block);
        co_await writing;
    }
    Task<void> draining = stream->drain();
    co_await draining;
}

} // namespace tessarune
