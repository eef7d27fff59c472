#include "Tessarune/ui/desktop/ScreenshotService.h"

#include "Tessarune/diagnostics/DiagnosticsRunFiles.h"
#include "TessaruneCore/text/Text.h"

#include <QBuffer>
#include <algorithm>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>

namespace tessarune {

namespace {

constexpr std::int64_t shortestIntervalMS = 250; // a screenshot takes some milliseconds

/// A run may be deleted at any time, with its recording; a picture must not recreate the run's
/// folder.
void write(FileSystem& files, const std::filesystem::path& run, const std::string& name,
           const QImage& picture) {
    const std::filesystem::path settings =
        DiagnosticsRunFiles(files, run, {}, true).path("settings");
    if (!files.exists(settings))
        return;
    QBuffer buffer;
    picture.save(&buffer, "PNG");
    const std::filesystem::path folder = run / "screenshots";
    try {
        files.createDirectories(folder);
        files.writeAtomically(folder / name,
                              std::string_view(buffer.data().constData(),
                                               static_cast<std::size_t>(buffer.data().size())));
        if (!files.exists(settings))
            files.remove(run);
    } catch (const std::system_error&) { // a failure loses the picture and nothing else
    }
}

} // namespace

ScreenshotService::ScreenshotService(Environment environment)
    : environment_(std::move(environment)),
      queue_(environment_.host.serialQueue("Tessarune.ScreenshotService", QueuePriority::utility)) {
    runs_ = environment_.notifications.observe(
        diagnosticsRunDidUpdate, [this](const NotificationObject& run) {
            if (const auto* directory = std::get_if<std::filesystem::path>(&run))
                run_ = *directory;
        });
    observations_.follow(environment_.session.isDiagnosticsRunning, [this] { arm(); });
    observations_.follow(environment_.settings.screenshotEnabled.published(), [this] { arm(); });
}

bool ScreenshotService::isWanted() const {
    // A run may contain less than the settings ask for: it has no texts if the session must not be
    // recorded.
    return *environment_.settings.screenshotEnabled && *environment_.session.isDiagnosticsRunning &&
           environment_.keepsTexts();
}

void ScreenshotService::arm() {
    timer_.cancel();
    if (!isWanted())
        return;
    const auto interval = std::max(*environment_.settings.screenshotIntervalMs, shortestIntervalMS);
    timer_ = environment_.host.after(static_cast<double>(interval) / 1000, [this] {
        if (isWanted())
            take();
        arm();
    });
}

void ScreenshotService::take() {
    QImage picture = environment_.picture();
    if (run_.empty() || picture.isNull() || picture == last_)
        return;
    last_ = picture;
    const std::string name = "window-" + Text::fixed(environment_.host.wallClock(), 3) + ".png";
    queue_->async([&files = environment_.files, run = run_, name, picture = std::move(picture)] {
        write(files, run, name, picture);
    });
}

} // namespace tessarune
