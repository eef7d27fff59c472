#include "bench/window/FirstPicture.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <thread>

namespace tessarune {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto longestWait = std::chrono::seconds(30);
constexpr auto lookAgain = std::chrono::milliseconds(1);
constexpr auto restAfterwards = std::chrono::seconds(1); // lets the memory settle
constexpr int smallestWidth = 100;                       // of a window; narrower ones are ignored

template <typename Reply>
using Answer = std::unique_ptr<Reply, decltype(&std::free)>;

struct Picture {
    explicit Picture(xcb_connection_t* x)
        : server(x), screen(*xcb_setup_roots_iterator(xcb_get_setup(x)).data) {}

    /// The colour of the screen at a point; 0 if it is unknown.
    std::uint32_t pixel(std::int16_t x, std::int16_t y) const {
        const auto asked = xcb_get_image(server, XCB_IMAGE_FORMAT_Z_PIXMAP, screen.root, x, y, 1, 1,
                                         ~std::uint32_t{0});
        const Answer<xcb_get_image_reply_t> reply(xcb_get_image_reply(server, asked, nullptr),
                                                  std::free);
        if (!reply || xcb_get_image_data_length(reply.get()) < 4)
            return 0;
        const std::uint8_t* const bytes = xcb_get_image_data(reply.get());
        return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8U |
               std::uint32_t{bytes[2]} << 16U;
    }
    /// Whether the middle of a window has another colour than the root window.
    bool isPainted() const {
        const Answer<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(server, xcb_query_tree(server, screen.root), nullptr), std::free);
        if (!tree)
            return false;
        const std::uint32_t empty = pixel(0, 0); // no window covers the corner
        for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
            const xcb_window_t window = xcb_query_tree_children(tree.get())[i];
            const Answer<xcb_get_geometry_reply_t> place(
                xcb_get_geometry_reply(server, xcb_get_geometry(server, window), nullptr),
                std::free);
            if (!place || place->width < smallestWidth)
                continue;
            if (pixel(static_cast<std::int16_t>(place->x + place->width / 2),
                      static_cast<std::int16_t>(place->y + place->height / 2)) != empty)
                return true;
        }
        return false;
    }

    xcb_connection_t* server;
    const xcb_screen_t& screen;
};

/// The processor time that the threads of a process have used; ended threads do not count.
double processorSecondsOf(pid_t process) {
    double nanoseconds = 0;
    const auto threads = "/proc/" + std::to_string(process) + "/task";
    for (const auto& thread : std::filesystem::directory_iterator(threads)) {
        double its = 0;
        std::ifstream(thread.path() / "schedstat") >> its;
        nanoseconds += its;
    }
    return nanoseconds / 1e9;
}

double megabytesOf(pid_t process) {
    std::ifstream rollup("/proc/" + std::to_string(process) + "/smaps_rollup");
    for (std::string word; rollup >> word;) {
        if (double kilobytes = 0; word == "Pss:" && rollup >> kilobytes)
            return kilobytes * 1024 / 1e6;
    }
    return 0;
}

} // namespace

FirstPicture FirstPicture::of(const std::vector<std::string>& command) {
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> server(
        xcb_connect(nullptr, nullptr), xcb_disconnect);
    if (xcb_connection_has_error(server.get()) != 0)
        throw std::runtime_error("no display");
    const Picture picture(server.get());
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);

    const auto begin = Clock::now();
    pid_t child = 0;
    if (posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0)
        throw std::runtime_error("cannot start " + command.front());
    while (!picture.isPainted() && Clock::now() < begin + longestWait)
        std::this_thread::sleep_for(lookAgain);
    FirstPicture result{std::chrono::duration<double>(Clock::now() - begin).count(),
                        processorSecondsOf(child), 0};
    std::this_thread::sleep_for(restAfterwards);
    result.megabytes = megabytesOf(child);
    kill(child, SIGTERM);
    waitpid(child, nullptr, 0);
    if (result.seconds >= std::chrono::duration<double>(longestWait).count())
        throw std::runtime_error(command.front() + " painted nothing");
    return result;
}

} // namespace tessarune
