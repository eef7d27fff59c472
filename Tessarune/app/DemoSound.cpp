#include "Tessarune/app/DemoSound.h"

#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/model-store/ProgramPlaces.h"
#include "TessaruneCore/text/Localization.h"

#include <stdexcept>

namespace tessarune {

namespace {

std::filesystem::path sample() {
    for (const auto& folder : ProgramPlaces::sampleFolders()) {
        auto path = folder / "two_cities.wav";
        if (std::filesystem::exists(path))
            return path;
    }
    throw std::runtime_error(localized("the sample speech is missing; scripts/setup fetches it"));
}

} // namespace

DemoSound::DemoSound(Host& host) : host_(host), server_(private_.address()) {}

Task<void> DemoSound::play() {
    const Executor main = Executor::main(host_);
    const std::unique_ptr<MediaFile> file = openFFmpegMediaFile(sample());
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
