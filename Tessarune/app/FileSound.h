#pragma once

#include "Tessarune/platform/file-sound/FileSoundServer.h"
#include "TessaruneCore/host/Host.h"

#include <exception>
#include <filesystem>
#include <functional>
#include <memory>

/// Files as a sound, read by the program's own media library.
namespace tessarune::FileSound {

/// As FileSoundServer's constructor.
std::unique_ptr<FileSoundServer> make(Host& host, std::filesystem::path file,
                                      FileSoundServer::Pace pace,
                                      std::function<void(std::exception_ptr)> onFinished);

/// Speech that comes with the program. Throws with a text that says how to get it.
std::filesystem::path sample();

} // namespace tessarune::FileSound
