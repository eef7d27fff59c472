#pragma once

#include "Tessarune/audio/SoundServer.h"
#include "TessaruneCore/host/Host.h"
#include "TessaruneCore/host/Task.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// The sound of the desktop program: the desktop's server, or a file that plays like one. Main
/// queue; the host outlives it.
class DesktopSound {
  public:
    /// `onFinished` is called when the file has been played.
    DesktopSound(Host& host, std::optional<std::filesystem::path> file,
                 std::function<void()> onFinished);

    SoundServer& server() { return *server_; }
    bool isFile() const { return file_.has_value(); }
    /// What is heard, where it is no source of the computer's; empty otherwise.
    std::string name() const { return file_ ? file_->filename().string() : std::string(); }

    /// Gives why there is no sound, for the user; empty if there is. May be tried again.
    Task<std::string> connect();

  private:
    Host& host_;
    const std::optional<std::filesystem::path> file_;
    std::unique_ptr<SoundServer> server_;
};

} // namespace tessarune
