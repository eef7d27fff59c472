#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// The beginning of a RIFF WAVE file of 16-bit PCM. A plain value; reading survives any bytes.
struct WAVHeader {
    static constexpr std::size_t size = 44; ///< of what `encoded` gives
    /// How much of a file `decoded` wants to see: headers of other programs have more in front.
    static constexpr std::size_t sizeToRead = 65536;

    std::uint32_t sampleRate = 0;
    std::uint16_t channels = 1;
    std::uint64_t dataSize = 0; ///< bytes of sound, as the header claims

    /// Where the sound begins, and where its size stands.
    std::uint64_t dataOffset = size;

    bool operator==(const WAVHeader&) const = default;

    std::uint64_t bytesPerSecond() const { return std::uint64_t{sampleRate} * channels * 2; }

    /// A size beyond 32 bits is written as the largest one, which players take for "to the end".
    std::string encoded() const;
    /// The four bytes in front of the sound.
    static std::string encodedSize(std::uint64_t dataSize);

    /// Nothing if these bytes do not begin such a file.
    static std::optional<WAVHeader> decoded(std::string_view bytes);
};

} // namespace tessarune
