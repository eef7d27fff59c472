#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// The beginning of a RIFF WAVE file of 16-bit PCM. A plain value; reading tolerates any bytes.
struct WAVHeader {
    static constexpr std::size_t size = 44; ///< size of the result of `encoded`
    /// How many bytes of a file to pass to `decoded`. Headers by other programs may be longer than
    /// `size`.
    static constexpr std::size_t sizeToRead = 65536;

    std::uint32_t sampleRate = 0;
    std::uint16_t channels = 1;
    std::uint64_t dataSize = 0; ///< bytes of sound, as the header claims

    /// The offset of the sound in the file. The four bytes before it are the size field.
    std::uint64_t dataOffset = size;

    bool operator==(const WAVHeader&) const = default;

    std::uint64_t bytesPerSecond() const { return std::uint64_t{sampleRate} * channels * 2; }

    /// Returns the bytes of the header. A size beyond 32 bits becomes the maximum, which players
    /// read as "to the end of the file".
    std::string encoded() const;
    /// The four bytes of the size field before the sound.
    static std::string encodedSize(std::uint64_t dataSize);

    /// Returns `nullopt` if these bytes are not the beginning of such a file.
    static std::optional<WAVHeader> decoded(std::string_view bytes);
};

} // namespace tessarune
