#include "Tessarune/app/RecordingGate.h"

#include "Tessarune/platform/disk/DiskFailure.h"
#include "TessaruneCore/text/Localization.h"

#include <mutex>
#include <system_error>
#include <utility>

namespace tessarune {

/// The lock and the number of its holds. The last hold releases the lock, on any thread.
struct RecordingGate::DataFolder {
    std::mutex mutex;
    std::optional<DataFolderLock> lock;
    int holds = 0;

    void drop() {
        const std::scoped_lock guard(mutex);
        if (--holds == 0)
            lock.reset();
    }
};

RecordingGate::RecordingGate(const AppSettings& settings, const JSONUserDefaults& stored,
                             const TessarunePaths& paths, std::string program)
    : settings_(settings),
      stored_(stored),
      paths_(paths),
      program_(std::move(program)),
      dataFolder_(std::make_shared<DataFolder>()) {}

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
    return bothSentences(what, localized("Nothing is recorded until you choose: tessarune-terminal "
                                         "--set recordWhileCaptioning=true (or false)."));
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

std::variant<DataFolderHold, DataFolderLock::Holder> RecordingGate::holdDataFolder() {
    const std::scoped_lock guard(dataFolder_->mutex);
    std::optional<DataFolderLock> lock;
    if (!dataFolder_->lock) {
        auto taken = DataFolderLock::take(paths_, program_);
        if (const auto* holder = std::get_if<DataFolderLock::Holder>(&taken))
            return *holder;
        lock.emplace(std::move(std::get<DataFolderLock>(taken)));
    }
    // Checked even if this program already has the folder: its disk may have failed since.
    DiskFailure::requireWritable(paths_.appSupportBase());
    DiskFailure::requireWritable(paths_.recordings());
    if (lock)
        dataFolder_->lock.emplace(std::move(*lock));
    ++dataFolder_->holds;
    return DataFolderHold(this, [folder = dataFolder_](const void*) { folder->drop(); });
}

std::optional<DataFolderLock::Holder> RecordingGate::takeDataFolder() {
    const auto held = holdDataFolder();
    if (const auto* holder = std::get_if<DataFolderLock::Holder>(&held))
        return *holder;
    taken_ = std::get<DataFolderHold>(held);
    return std::nullopt;
}

bool RecordingGate::hasDataFolder() const {
    const std::scoped_lock guard(dataFolder_->mutex);
    return dataFolder_->lock.has_value();
}

} // namespace tessarune
