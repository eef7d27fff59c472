#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tessarune {

/// Returns where the sound of a file ends according to its header, in bytes from its beginning.
/// `head` are the bytes before the sound. Tolerates any bytes.
///
/// FFmpeg derives the length of these files from the data that is present, even if the end is
/// missing: WAV, RF64, BW64, W64, AIFF, CAF, AVI, Matroska, and MP3 in a pipe. Returns `nullopt`
/// for other files, and if the program that wrote the file did not know the length.
std::optional<std::uint64_t> statedEnd(std::string_view head);

} // namespace tessarune
