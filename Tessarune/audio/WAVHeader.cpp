#include "Tessarune/audio/WAVHeader.h"

#include <algorithm>
#include <limits>

namespace tessarune {

namespace {

constexpr std::uint16_t pcmFormat = 1;
constexpr std::uint16_t bitsPerSample = 16;
constexpr std::uint32_t formatChunkSize = 16;
/// No real sound exceeds these two limits; a header that claims more is wrong.
constexpr std::uint32_t highestSampleRate = 768000;
constexpr std::uint16_t maximumChannels = 64;
constexpr std::uint64_t largestSize = std::numeric_limits<std::uint32_t>::max();

void append(std::string& bytes, std::uint64_t value, int width) {
    for (int i = 0; i < width; ++i)
        bytes += static_cast<char>(value >> (8 * i) & 0xFF);
}

/// The number in the `width` bytes at `at`; 0 beyond the end.
std::uint32_t number(std::string_view bytes, std::uint64_t at, std::uint64_t width) {
    std::uint32_t value = 0;
    if (at + width > bytes.size())
        return 0;
    for (std::uint64_t i = 0; i < width; ++i)
        value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
    return value;
}

bool reads(std::string_view bytes, std::uint64_t at, std::string_view tag) {
    return at <= bytes.size() && bytes.substr(at).starts_with(tag);
}

/// Reads the values of the format chunk at `at`.
bool readFormat(std::string_view bytes, std::uint64_t at, WAVHeader& header) {
    header.channels = static_cast<std::uint16_t>(number(bytes, at + 2, 2));
    header.sampleRate = number(bytes, at + 4, 4);
    return number(bytes, at, 2) == pcmFormat && number(bytes, at + 14, 2) == bitsPerSample &&
           header.channels > 0 && header.channels <= maximumChannels && header.sampleRate > 0 &&
           header.sampleRate <= highestSampleRate;
}

} // namespace

std::string WAVHeader::encodedSize(std::uint64_t dataSize) {
    std::string bytes;
    append(bytes, std::min(dataSize, largestSize), 4);
    return bytes;
}

std::string WAVHeader::encoded() const {
    const std::uint32_t blockAlign = channels * std::uint32_t{bitsPerSample / 8};
    std::string bytes = "RIFF";
    bytes += encodedSize(dataSize + (size - 8));
    bytes += "WAVEfmt ";
    append(bytes, formatChunkSize, 4);
    append(bytes, pcmFormat, 2);
    append(bytes, channels, 2);
    append(bytes, sampleRate, 4);
    append(bytes, bytesPerSecond(), 4);
    append(bytes, blockAlign, 2);
    append(bytes, bitsPerSample, 2);
    bytes += "data";
    bytes += encodedSize(dataSize);
    return bytes;
}

std::optional<WAVHeader> WAVHeader::decoded(std::string_view bytes) {
    constexpr std::uint64_t chunkHeadSize = 8;
    if (!reads(bytes, 0, "RIFF") || !reads(bytes, 8, "WAVE"))
        return std::nullopt;
    WAVHeader header;
    bool hasFormat = false;
    for (std::uint64_t at = 12; at + chunkHeadSize <= bytes.size();) {
        const std::uint64_t chunkSize = number(bytes, at + 4, 4);
        const std::uint64_t body = at + chunkHeadSize;
        if (reads(bytes, at, "fmt ")) {
            if (chunkSize < formatChunkSize || !readFormat(bytes, body, header))
                return std::nullopt;
            hasFormat = true;
        } else if (reads(bytes, at, "data")) {
            header.dataSize = chunkSize;
            header.dataOffset = body;
            return hasFormat ? std::optional(header) : std::nullopt;
        }
        at = body + chunkSize + (chunkSize & 1); // chunks begin at even offsets
    }
    return std::nullopt;
}

} // namespace tessarune
