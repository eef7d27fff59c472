#pragma once

#include "Tessarune/audio/MediaFile.h"

namespace tessarune {

/// Opens anything that FFmpeg's libraries read; an `OpenMediaFile`.
std::unique_ptr<MediaFile> openFFmpegMediaFile(const std::filesystem::path& path);

/// The same as an `OpenAwaitedMediaFile`.
std::unique_ptr<MediaFile> openAwaitedFFmpegMediaFile(const std::filesystem::path& path,
                                                      std::stop_token stop);

} // namespace tessarune
