#include "Tessarune/platform/disk/DataFolderLock.h"

#include "Tessarune/platform/disk/PosixFileSystem.h"

#include <unistd.h>

#include <fstream>

namespace tessarune {

namespace {

DataFolderLock::Holder holderOf(const std::filesystem::path& file) {
    DataFolderLock::Holder holder;
    std::ifstream note(file);
    note >> holder.processID >> std::ws;
    std::getline(note, holder.program);
    return holder;
}

} // namespace

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
