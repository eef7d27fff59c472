#include "Tessarune/app/RecordingGate.h"

#include "Tessarune/platform/disk/DiskFailure.h"
#include "TessaruneCore/text/Localization.h"

#include <system_error>
#include <utility>
#include <variant>

namespace tessarune {

bool RecordingGate::recordsSessions() const {
    return !recordsNothing_ && doubt().empty() &&
           (*settings_.recordWhileCaptioning || *settings_.sessionDiagnosticsEnabled);
}

std::string RecordingGate::doubt() const {
    if (!settings_.recordWhileCaptioning.isUnreadable())
        return {};
    const std::string file = TessarunePaths::settingsFile().string();
    const std::string what =
        stored_.problem().empty()
            ? localized("%@: recordWhileCaptioning is neither true nor false.", {file})
            : localized("The settings cannot be read: %@.", {stored_.problem()});
    return what + " " +
           localized("Nothing is recorded until you choose: tessarune-terminal --set "
                     "recordWhileCaptioning=true (or false).");
}

bool RecordingGate::mayRecord() {
    if (recordsNothing_)
        return false;
    const Obstacle found = obstacle();
    if (onDecision)
        onDecision(found);
    return !found.isThere();
}

RecordingGate::Obstacle RecordingGate::obstacle() {
    Obstacle found;
    found.doubt = doubt();
    if (!found.doubt.empty())
        return found;
    try {
        found.holder = takeDataFolder();
    } catch (const std::system_error& error) {
        found.failure = error.what();
    }
    return found;
}

std::optional<DataFolderLock::Holder> RecordingGate::takeDataFolder() {
    std::optional<DataFolderLock> lock;
    if (!dataFolder_) {
        auto taken = DataFolderLock::take(paths_, program_);
        if (const auto* holder = std::get_if<DataFolderLock::Holder>(&taken))
            return *holder;
        lock.emplace(std::move(std::get<DataFolderLock>(taken)));
    }
    // Checked even if this program already has the folder: its disk may have failed since.
    DiskFailure::requireWritable(paths_.appSupportBase());
    DiskFailure::requireWritable(paths_.recordings());
    if (lock)
        dataFolder_.emplace(std::move(*lock));
    return std::nullopt;
}

} // namespace tessarune
