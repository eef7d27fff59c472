#pragma once

#include "Tessarune/audio/MediaFile.h"

namespace tessarune {

/// Opens any sound file that FFmpeg's libraries can read; an `OpenMediaFile`.
std::unique_ptr<MediaFile> openFFmpegMediaFile(const std::filesystem::path& path);

/// Also opens pipes; `stop` ends a wait for their data. An `OpenAwaitedMediaFile`.
std::unique_ptr<MediaFile> openAwaitedFFmpegMediaFile(const std::filesystem::path& path,
                                                      std::stop_token stop);

} // namespace tessarune
