#include "Tessarune/platform/pdf-program/PDFProgram.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/SystemErrors.h"
#include "TessaruneCore/text/Text.h"

#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace tessarune::PDFProgram {

namespace {

[[noreturn]] void failWith(int error) {
    throw std::runtime_error(localized("无法运行 tessarune-pdf：%@", {systemMessage(error)}));
}

/// A file in memory that a process can use as one of its standard streams.
class MemoryStream {
  public:
    explicit MemoryStream(const char* name) : file_(::memfd_create(name, MFD_CLOEXEC)) {
        if (file_ < 0)
            failWith(errno);
    }
    ~MemoryStream() { ::close(file_); }
    MemoryStream(const MemoryStream&) = delete;

    int file() const { return file_; }

    void fill(std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t count = ::write(file_, bytes.data(), bytes.size());
            if (count < 0 && errno != EINTR)
                failWith(errno);
            bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        }
        ::lseek(file_, 0, SEEK_SET);
    }

    std::string content() {
        std::string bytes(static_cast<std::size_t>(::lseek(file_, 0, SEEK_END)), '\0');
        std::size_t at = 0;
        while (at < bytes.size()) {
            const ssize_t count =
                ::pread(file_, bytes.data() + at, bytes.size() - at, static_cast<off_t>(at));
            if (count == 0 || (count < 0 && errno != EINTR))
                failWith(count == 0 ? EIO : errno);
            at += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        }
        return bytes;
    }

  private:
    int file_;
};

/// The attributes of the new process: its three standard streams, and no blocked signals.
class ProcessAttributes {
  public:
    ProcessAttributes(int input, int output, int error) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, error, STDERR_FILENO);
        posix_spawnattr_init(&attributes_);
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK);
    }
    ~ProcessAttributes() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }
    ProcessAttributes(const ProcessAttributes&) = delete;

    pid_t start(const std::filesystem::path& program) const {
        std::string name = program.string();
        char* const arguments[] = {name.data(), nullptr};
        pid_t process = 0;
        if (const int error =
                posix_spawn(&process, name.c_str(), &actions_, &attributes_, arguments, environ))
            failWith(error);
        return process;
    }

  private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

/// Waits for a process and returns its status. Kills a process that hangs, because other exports
/// wait for the current one. Throws after killing the process, or if waiting fails.
int waitForEnd(pid_t process) {
    constexpr int maximumMilliseconds = 180'000; // eight hours of text take some seconds
    // The C library of Debian 12 declares pidfd_open wrongly for C++.
    const auto handle = static_cast<int>(::syscall(SYS_pidfd_open, process, 0));
    pollfd ending{handle, POLLIN, 0};
    int ended = 1; // without a handle there is no time limit
    while (handle >= 0 && (ended = ::poll(&ending, 1, maximumMilliseconds)) < 0 && errno == EINTR) {
    }
    if (handle >= 0)
        ::close(handle);
    if (ended == 0)
        ::kill(process, SIGKILL);
    int status = 0;
    while (::waitpid(process, &status, 0) < 0) {
        if (errno != EINTR)
            failWith(errno);
    }
    if (ended == 0)
        failWith(ETIMEDOUT);
    return status;
}

std::filesystem::path program() {
    std::error_code failed;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", failed);
    std::filesystem::path found = self.parent_path() / "tessarune-pdf";
    if (failed || !std::filesystem::exists(found, failed))
        throw std::runtime_error(localized("缺少 tessarune-pdf。它随窗口程序一起安装。"));
    return found;
}

} // namespace

std::string pdf(const HistoryTranscriptPDFDocument& document) {
    MemoryStream input("tessarune-pdf-input");
    MemoryStream output("tessarune-pdf-output");
    MemoryStream errors("tessarune-pdf-errors");
    input.fill(document.encoded());
    const pid_t process =
        ProcessAttributes(input.file(), output.file(), errors.file()).start(program());
    const int status = waitForEnd(process);
    std::string bytes = output.content();
    if (status == 0 && bytes.starts_with("%PDF"))
        return bytes;
    const std::string message = errors.content();
    throw std::runtime_error(localized("tessarune-pdf 没有完成：%@",
                                       {std::string(Text::prefix(Text::trimmed(message), 300))}));
}

} // namespace tessarune::PDFProgram
