#pragma once

#include "Tessarune/audio/MediaFile.h"

namespace tessarune {

/// Encodes with FFmpeg's libraries; a `TranscodeToM4A`. The file is written beside its final name,
/// as "<to>.part", and takes that name when it is whole and on the disk.
void transcodeToM4A(const std::filesystem::path& from, const std::filesystem::path& to,
                    const MediaProgress& progress, std::stop_token stop);

} // namespace tessarune
