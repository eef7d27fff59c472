#include "Tessarune/ui/desktop/DesktopSound.h"

#include "Tessarune/app/FileSound.h"
#include "Tessarune/platform/pulse/PulseSoundServer.h"
#include "TessaruneCore/text/Localization.h"

#include <exception>
#include <utility>

namespace tessarune {

DesktopSound::DesktopSound(Host& host, std::optional<std::filesystem::path> file,
                           std::function<void()> onFinished)
    : host_(host), file_(std::move(file)) {
    if (!file_) {
        server_ = std::make_unique<PulseSoundServer>();
        return;
    }
    server_ = FileSound::make(
        host, *file_, FileSoundServer::Pace::realTime(),
        [onFinished = std::move(onFinished)](const std::exception_ptr&) { onFinished(); });
}

Task<std::string> DesktopSound::connect() {
    std::string problem;
    try {
        Task<void> connecting = server_->connect(Executor::main(host_));
        co_await connecting;
    } catch (const SoundServerError& error) {
        problem = localized("There is no sound server: %@", {error.what()});
    } catch (const std::exception& error) {
        problem = error.what();
    }
    co_return problem;
}

} // namespace tessarune
