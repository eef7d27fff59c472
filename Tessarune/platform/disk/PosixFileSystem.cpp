#include "Tessarune/platform/disk/PosixFileSystem.h"

#include "Tessarune/platform/disk/DiskFailure.h"
#include "Tessarune/platform/disk/Uninterrupted.h"
#include "Tessarune/shell/UnfinishedWrite.h"
#include "TessaruneCore/text/Localization.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

namespace tessarune {

namespace fs = std::filesystem;

namespace {

using DiskFailure::fail;
using DiskFailure::failToWrite;

/// Throws if `error` is set; for library calls that do not report in `errno`.
void check(const std::error_code& error, std::string_view what, const fs::path& path) {
    if (!error)
        return;
    errno = error.value();
    fail(what, path);
}

// Private to the user: nobody else should learn what the user listened to.
constexpr mode_t privateFile = 0600;
constexpr mode_t privateFolder = 0700;

/// An open descriptor that is closed when it goes out of scope.
class Descriptor {
  public:
    Descriptor(const fs::path& path, int flags) : Descriptor(path, flags, path) {}
    /// Error messages show `named` in place of `path`, which may mean nothing to the user.
    Descriptor(const fs::path& path, int flags, fs::path named) : path_(std::move(named)) {
        number_ =
            uninterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC, privateFile); });
        if (number_ >= 0)
            return;
        if ((flags & O_ACCMODE) == O_RDONLY)
            fail(localizationKey("cannot open %@"), path_);
        failToWrite(localizationKey("cannot open %@"), path_);
    }
    ~Descriptor() {
        if (number_ >= 0)
            ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    void writeAll(std::string_view bytes) const {
        while (!bytes.empty()) {
            const ssize_t written =
                uninterrupted([&] { return ::write(number_, bytes.data(), bytes.size()); });
            if (written < 0)
                fail(localizationKey("cannot write %@"), path_);
            bytes.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    void writeAllAt(std::uint64_t offset, std::string_view bytes) const {
        while (!bytes.empty()) {
            const ssize_t written = uninterrupted([&] {
                return ::pwrite(number_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
            });
            if (written < 0)
                fail(localizationKey("cannot write %@"), path_);
            bytes.remove_prefix(static_cast<std::size_t>(written));
            offset += static_cast<std::uint64_t>(written);
        }
    }
    void resize(std::uint64_t size) const {
        if (uninterrupted([&] { return ::ftruncate(number_, static_cast<off_t>(size)); }) != 0)
            fail(localizationKey("cannot write %@"), path_);
    }
    std::string readAll() const {
        std::string all;
        struct stat facts {};
        if (::fstat(number_, &facts) == 0 && S_ISCHR(facts.st_mode))
            return all; // a device such as /dev/zero never ends
        char block[1 << 16];
        for (;;) {
            const ssize_t count =
                uninterrupted([&] { return ::read(number_, block, sizeof block); });
            if (count < 0)
                fail(localizationKey("cannot read %@"), path_);
            if (count == 0)
                return all;
            all.append(block, static_cast<std::size_t>(count));
        }
    }
    std::string readSome(std::uint64_t offset, std::size_t count) const {
        std::string some(count, '\0');
        std::size_t filled = 0;
        while (filled < count) {
            const ssize_t got = uninterrupted([&] {
                return ::pread(number_, some.data() + filled, count - filled,
                               static_cast<off_t>(offset + filled));
            });
            if (got < 0)
                fail(localizationKey("cannot read %@"), path_);
            if (got == 0)
                break;
            filled += static_cast<std::size_t>(got);
        }
        some.resize(filled);
        return some;
    }
    void synchronize() const {
        if (uninterrupted([&] { return ::fsync(number_); }) != 0)
            fail(localizationKey("cannot write %@ to the disk"), path_);
    }
    void close() {
        const int number = std::exchange(number_, -1);
        if (number >= 0 && ::close(number) != 0 && errno != EINTR)
            fail(localizationKey("cannot close %@"), path_);
    }

  private:
    fs::path path_;
    int number_ = -1;
};

class PosixAppendFile final : public AppendFile {
  public:
    explicit PosixAppendFile(const fs::path& path) : file_(path, O_WRONLY | O_CREAT | O_TRUNC) {}

    void append(std::string_view bytes) override {
        file_.writeAllAt(end_, bytes);
        end_ += bytes.size();
    }
    void appendZeros(std::uint64_t count) override {
        file_.resize(end_); // removes the remains of a failed append, which are not zeros
        file_.resize(end_ + count);
        end_ += count;
    }
    void overwrite(std::uint64_t offset, std::string_view bytes) override {
        file_.writeAllAt(offset, bytes);
    }
    void synchronize() override { file_.synchronize(); }
    void close() override { file_.close(); }

  private:
    Descriptor file_;
    std::uint64_t end_ = 0; // a failed append is overwritten by the next one
};

/// Appends at the current end of the file, so that programs that write lines into the same log do
/// not overwrite each other.
class PosixLineFile final : public AppendFile {
  public:
    explicit PosixLineFile(const fs::path& path)
        : path_(path),
          appending_(path, O_WRONLY | O_CREAT | O_APPEND),
          overwriting_(path, O_WRONLY) {}

    void append(std::string_view bytes) override { appending_.writeAll(bytes); }
    void appendZeros(std::uint64_t count) override {
        overwriting_.resize(fs::file_size(path_) + count);
    }
    void overwrite(std::uint64_t offset, std::string_view bytes) override {
        overwriting_.writeAllAt(offset, bytes);
    }
    void synchronize() override { overwriting_.synchronize(); }
    void close() override {
        overwriting_.close();
        appending_.close();
    }

  private:
    fs::path path_;
    Descriptor appending_;
    Descriptor overwriting_; // for writes at an offset, which O_APPEND would ignore
};

/// Flushes the folder of a file; otherwise a crash could lose a new name in it.
void synchronizeFolderOf(const fs::path& path) {
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    Descriptor(folder, O_RDONLY | O_DIRECTORY).synchronize();
}

/// A path with a name that only this write uses, in the same folder, so that the rename stays on
/// one disk.
fs::path temporaryPath(const fs::path& path) {
    static std::atomic<unsigned> writes = 0;
    fs::path temporary = path;
    return temporary += UnfinishedWrite::suffix(static_cast<int>(::getpid()), ++writes % 1'000'000);
}

} // namespace

// O_NONBLOCK: a pipe or a device in place of the file must not block the program.

std::string PosixFileSystem::read(const Path& path) {
    return Descriptor(path, O_RDONLY | O_NONBLOCK).readAll();
}

std::string PosixFileSystem::read(const Path& path, std::uint64_t offset, std::size_t count) {
    return Descriptor(path, O_RDONLY | O_NONBLOCK).readSome(offset, count);
}

void PosixFileSystem::writeAtomically(const Path& path, std::string_view bytes) {
    const fs::path temporary = temporaryPath(path);
    try {
        Descriptor file(temporary, O_WRONLY | O_CREAT | O_TRUNC, path);
        file.writeAll(bytes);
        file.synchronize();
        file.close();
        rename(temporary, path);
    } catch (...) {
        ::unlink(temporary.c_str());
        throw;
    }
}

std::unique_ptr<AppendFile> PosixFileSystem::create(const Path& path) {
    auto file = std::make_unique<PosixAppendFile>(path);
    synchronizeFolderOf(path);
    return file;
}

std::unique_ptr<AppendFile> PosixFileSystem::openForAppending(const Path& path) {
    const bool isNew = !exists(path);
    auto file = std::make_unique<PosixLineFile>(path);
    if (isNew)
        synchronizeFolderOf(path);
    return file;
}

void PosixFileSystem::truncate(const Path& path, std::uint64_t size) {
    if (exists(path))
        Descriptor(path, O_WRONLY | O_NOFOLLOW | O_NONBLOCK).resize(size);
}

void PosixFileSystem::createDirectories(const Path& path) {
    std::error_code ignored;
    if (fs::is_directory(path, ignored))
        return;
    if (path.has_parent_path() && path.parent_path() != path)
        createDirectories(path.parent_path());
    if (::mkdir(path.c_str(), privateFolder) == 0)
        return;
    const int refused = errno;
    if (fs::is_directory(path, ignored))
        return; // another program has created it meanwhile
    const bool isBroken = fs::is_symlink(path, ignored) && !fs::exists(path, ignored);
    errno = refused != EEXIST ? refused : isBroken ? ENOENT : ENOTDIR;
    failToWrite(localizationKey("cannot create the folder %@"), path);
}

bool PosixFileSystem::makeDirectory(const Path& path) {
    if (::mkdir(path.c_str(), privateFolder) == 0)
        return true;
    if (errno != EEXIST)
        failToWrite(localizationKey("cannot create the folder %@"), path);
    return false;
}

bool PosixFileSystem::remove(const Path& path) {
    std::error_code error;
    const auto removed = fs::remove_all(path, error);
    if (error) {
        errno = error.value();
        failToWrite(localizationKey("cannot remove %@"), path);
    }
    return removed > 0;
}

bool PosixFileSystem::removeFile(const Path& path) {
    std::error_code error;
    if (!fs::is_regular_file(fs::symlink_status(path, error)))
        return false;
    if (::unlink(path.c_str()) != 0)
        failToWrite(localizationKey("cannot remove %@"), path);
    return true;
}

void PosixFileSystem::rename(const Path& from, const Path& to) {
    if (::rename(from.c_str(), to.c_str()) != 0)
        failToWrite(localizationKey("cannot replace %@"), to);
    synchronizeFolderOf(to);
}

bool PosixFileSystem::exists(const Path& path) {
    std::error_code ignored;
    return fs::exists(path, ignored);
}

bool PosixFileSystem::isDirectory(const Path& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

std::uint64_t PosixFileSystem::size(const Path& path) {
    std::error_code error;
    const std::uint64_t size = fs::file_size(path, error);
    check(error, localizationKey("cannot read %@"), path);
    return size;
}

double PosixFileSystem::modifiedAt(const Path& path) {
    struct stat facts {};
    if (::stat(path.c_str(), &facts) != 0)
        fail(localizationKey("cannot read %@"), path);
    return static_cast<double>(facts.st_mtim.tv_sec) +
           static_cast<double>(facts.st_mtim.tv_nsec) * 1e-9;
}

std::vector<std::string> PosixFileSystem::list(const Path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    if (!fs::exists(folder, error) && !error) {
        // The target of a link may be on a disk that is not mounted.
        for (Path each = folder; each.has_relative_path(); each = each.parent_path()) {
            if (fs::is_symlink(each, error) && !fs::exists(each, error))
                check(std::make_error_code(std::errc::no_such_file_or_directory),
                      localizationKey("cannot read %@"), each);
        }
        return names;
    }
    const fs::directory_iterator entries(folder, error);
    check(error, localizationKey("cannot read %@"), folder);
    for (const auto& entry : entries)
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::uint64_t PosixFileSystem::freeSpace(const Path& path) {
    std::error_code error;
    const fs::space_info space = fs::space(path, error);
    check(error, localizationKey("cannot read %@"), path);
    return space.available;
}

void PosixFileSystem::removeUnfinished(const Path& folder,
                                       const std::function<bool(std::string_view)>& isOurs) {
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        const std::string name = at->path().filename().string();
        const auto write = UnfinishedWrite::parse(name);
        const bool isAbandoned =
            write && isOurs(write->name) && ::kill(write->process, 0) != 0 && errno == ESRCH;
        std::error_code ignored;
        if (isAbandoned && fs::is_regular_file(at->symlink_status(ignored)))
            ::unlink(at->path().c_str());
    }
}

} // namespace tessarune
