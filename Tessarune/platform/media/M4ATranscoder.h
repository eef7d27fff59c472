#pragma once

#include "Tessarune/audio/MediaFile.h"

namespace tessarune {

/// Implements `CreateM4A` with FFmpeg's libraries. Until it is finished, the file is named
/// "<to>.part".
std::unique_ptr<M4AFile> createM4A(const std::filesystem::path& to, AudioFormat from);

/// Implements `TranscodeToM4A`: encodes an existing file in the same way.
void transcodeToM4A(const std::filesystem::path& from, const std::filesystem::path& to,
                    const MediaProgress& progress, std::stop_token stop);

} // namespace tessarune
