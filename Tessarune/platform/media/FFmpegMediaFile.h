#pragma once

#include "Tessarune/audio/MediaFile.h"

namespace tessarune {

/// Implements `OpenMediaFile` for every sound file that FFmpeg's libraries can read.
std::unique_ptr<MediaFile> openFFmpegMediaFile(const std::filesystem::path& path);

/// Implements `OpenAwaitedMediaFile`. Also opens pipes; `stop` ends a wait for their data.
std::unique_ptr<MediaFile> openAwaitedFFmpegMediaFile(const std::filesystem::path& path,
                                                      std::stop_token stop);

} // namespace tessarune
