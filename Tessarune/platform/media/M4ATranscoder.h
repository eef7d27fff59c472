#pragma once

#include "Tessarune/audio/MediaFile.h"

namespace tessarune {

/// Encodes with FFmpeg's libraries; a `CreateM4A`. Until it is finished, the file is named
/// "<to>.part".
std::unique_ptr<M4AFile> createM4A(const std::filesystem::path& to, AudioFormat from);

/// Encodes an existing file in the same way; a `TranscodeToM4A`.
void transcodeToM4A(const std::filesystem::path& from, const std::filesystem::path& to,
                    const MediaProgress& progress, std::stop_token stop);

} // namespace tessarune
