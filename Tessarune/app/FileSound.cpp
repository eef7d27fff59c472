#include "Tessarune/app/FileSound.h"

#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/media/SwresampleConverter.h"
#include "Tessarune/platform/model-store/ProgramPlaces.h"
#include "TessaruneCore/text/Localization.h"

#include <stdexcept>
#include <utility>

namespace tessarune::FileSound {

std::unique_ptr<FileSoundServer> make(Host& host, std::filesystem::path file,
                                      FileSoundServer::Pace pace,
                                      std::function<void(std::exception_ptr)> onFinished) {
    return std::make_unique<FileSoundServer>(
        host, FileSoundServer::Media{openAwaitedFFmpegMediaFile, makeSwresampleConverter},
        std::move(file), std::move(pace), std::move(onFinished));
}

std::filesystem::path sample() {
    for (const auto& folder : ProgramPlaces::sampleFolders()) {
        auto path = folder / "two_cities.wav";
        if (std::filesystem::exists(path))
            return path;
    }
    throw std::runtime_error(localized("the sample speech is missing; scripts/setup fetches it"));
}

} // namespace tessarune::FileSound
