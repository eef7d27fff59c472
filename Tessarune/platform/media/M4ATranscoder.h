#pragma once

#include "Tessarune/audio/MediaFile.h"

namespace tessarune {

/// Encodes with FFmpeg's libraries; a `CreateM4A`. The file is written beside its final name, as
/// "<to>.part".
std::unique_ptr<M4AFile> createM4A(const std::filesystem::path& to, AudioFormat from);

/// The same for a whole file that is there already; a `TranscodeToM4A`.
void transcodeToM4A(const std::filesystem::path& from, const std::filesystem::path& to,
                    const MediaProgress& progress, std::stop_token stop);

} // namespace tessarune
