#include "Tessarune/platform/disk/FileWatch.h"

#include "TessaruneCore/text/SystemErrors.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <string>
#include <system_error>
#include <utility>

namespace tessarune {

namespace {

/// A file descriptor that is closed with its owner.
struct OwnedDescriptor {
    explicit OwnedDescriptor(int itsNumber) : number(itsNumber) {}
    ~OwnedDescriptor() {
        if (number >= 0)
            ::close(number);
    }
    OwnedDescriptor(const OwnedDescriptor&) = delete;
    OwnedDescriptor& operator=(const OwnedDescriptor&) = delete;

    const int number;
};

} // namespace

struct FileWatch::State {
    State(std::string itsName, Host& itsHost, std::function<void()> toCall)
        : name(std::move(itsName)), host(itsHost), onChange(std::move(toCall)) {}

    const std::string name;
    Host& host;
    const std::function<void()> onChange;
    const OwnedDescriptor events{::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)};
    const OwnedDescriptor ending{::eventfd(0, EFD_CLOEXEC)};
    std::atomic<bool> isOver = false;

    /// Reads all pending events. Returns whether one of them concerns the file.
    bool takeEvents() const {
        bool concerns = false;
        alignas(inotify_event) char bytes[16 * (sizeof(inotify_event) + NAME_MAX + 1)];
        for (;;) {
            const ssize_t count = ::read(events.number, bytes, sizeof bytes);
            if (count <= 0)
                return concerns;
            for (ssize_t at = 0; at < count;) {
                const auto* event = reinterpret_cast<const inotify_event*>(bytes + at);
                // After an overflow, events are missing.
                concerns = concerns || (event->mask & IN_Q_OVERFLOW) != 0 ||
                           (event->len > 0 && name == event->name);
                at += static_cast<ssize_t>(sizeof *event + event->len);
            }
        }
    }
};

FileWatch::FileWatch(const std::filesystem::path& file, Host& host, std::function<void()> onChange)
    : state_(std::make_shared<State>(file.filename().string(), host, std::move(onChange))) {
    const auto folder = file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
    // A watch on the file itself would miss a replacement, which is a different file.
    if (state_->events.number < 0 || state_->ending.number < 0 ||
        ::inotify_add_watch(state_->events.number, folder.c_str(),
                            IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE) < 0)
        throw std::system_error(errno, systemErrors(), folder.string());
    thread_ = std::thread([state = state_] { watch(state); });
}

FileWatch::~FileWatch() {
    if (!thread_.joinable())
        return;
    state_->isOver = true;
    const std::uint64_t one = 1;
    (void)!::write(state_->ending.number, &one, sizeof one);
    thread_.join();
}

void FileWatch::watch(const std::shared_ptr<State>& state) {
    pollfd watched[] = {{state->events.number, POLLIN, 0}, {state->ending.number, POLLIN, 0}};
    while (!state->isOver) {
        if (::poll(watched, 2, -1) < 0 && errno != EINTR)
            return;
        if (!state->isOver && state->takeEvents())
            state->host.post([state] {
                if (!state->isOver)
                    state->onChange();
            });
    }
}

} // namespace tessarune
