#include "Tessarune/platform/disk/DataFolderLock.h"

#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "TessaruneCore/text/Localization.h"

#include <unistd.h>

#include <chrono>
#include <fstream>
#include <thread>

namespace tessarune {

namespace {

DataFolderLock::Holder readNote(const std::filesystem::path& file) {
    DataFolderLock::Holder holder;
    std::ifstream note(file);
    note >> holder.processID >> std::ws;
    std::getline(note, holder.program);
    return holder;
}

/// Waits a moment for the note of a holder that has just taken the lock.
DataFolderLock::Holder holderOf(const std::filesystem::path& file) {
    constexpr auto pause = std::chrono::milliseconds(5);
    constexpr int looks = 20;
    DataFolderLock::Holder holder = readNote(file);
    for (int i = 1; i < looks && holder.processID == 0; ++i) {
        std::this_thread::sleep_for(pause);
        holder = readNote(file);
    }
    return holder;
}

} // namespace

std::string DataFolderLock::Holder::text() const {
    return processID == 0 ? localized("Another program")
                          : localized("%@ (process %lld)", {program, std::to_string(processID)});
}

std::variant<DataFolderLock, DataFolderLock::Holder>
DataFolderLock::take(const TessarunePaths& paths, std::string_view program) {
    PosixFileSystem().createDirectories(paths.appSupportBase());
    auto lock = FileLock::tryToTake(paths.lock());
    if (!lock)
        return holderOf(paths.lock());
    lock->note(std::to_string(::getpid()) + " " + std::string(program) + "\n");
    return DataFolderLock(std::move(*lock));
}

std::optional<DataFolderLock::Holder> DataFolderLock::holder(const TessarunePaths& paths) {
    return FileLock::isTaken(paths.lock()) ? std::optional(holderOf(paths.lock())) : std::nullopt;
}

} // namespace tessarune
