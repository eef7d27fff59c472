#pragma once

#include "TessaruneCore/host/Host.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <thread>

namespace tessarune {

/// Reports when a file is written, replaced or removed by any program, this one included. The file
/// need not exist; its folder must.
class FileWatch {
  public:
    /// `onChange` is called on the main queue; simultaneous changes may cause a single call. The
    /// destructor, too, must run on the main queue; after it, `onChange` is never called. Throws
    /// std::system_error if the folder cannot be watched.
    FileWatch(const std::filesystem::path& file, Host& host, std::function<void()> onChange);
    ~FileWatch();
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

  private:
    struct State;
    static void watch(const std::shared_ptr<State>& state);

    std::shared_ptr<State> state_;
    std::thread thread_;
};

} // namespace tessarune
