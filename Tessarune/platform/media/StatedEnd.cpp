#include "Tessarune/platform/media/StatedEnd.h"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace tessarune {

namespace {

enum class Order { littleEndian, bigEndian };

/// The head of the chunk that contains the sound. It directly precedes the sound.
struct SoundChunk {
    std::string_view file; ///< how the file begins
    std::string_view name;
    std::size_t length; ///< of the head
    std::size_t sizeAt; ///< where in the head the size is
    std::size_t width;  ///< of the size
    Order order;
    std::uint64_t counted; ///< bytes of the head that the size includes
};

constexpr SoundChunk soundChunks[] = {
    {"RIFF", "data", 8, 4, 4, Order::littleEndian, 0},    // WAV
    {"RF64", "data", 8, 4, 4, Order::littleEndian, 0},    //
    {"BW64", "data", 8, 4, 4, Order::littleEndian, 0},    //
    {"riff", "data", 24, 16, 8, Order::littleEndian, 24}, // W64
    {"FORM", "SSND", 16, 4, 4, Order::bigEndian, 8},      // AIFF
    {"caff", "data", 16, 4, 8, Order::bigEndian, 4},      // CAF
};

bool reads(std::string_view bytes, std::uint64_t at, std::string_view tag) {
    return at <= bytes.size() && bytes.substr(at).starts_with(tag);
}

/// The number in the `width` bytes at `at`; 0 beyond the end.
std::uint64_t number(std::string_view bytes, std::uint64_t at, std::uint64_t width, Order order) {
    if (at > bytes.size() || width > bytes.size() - at)
        return 0;
    std::uint64_t value = 0;
    for (std::uint64_t i = 0; i < width; ++i) {
        const std::uint64_t place = order == Order::bigEndian ? i : width - 1 - i;
        value = value << 8 | static_cast<unsigned char>(bytes[at + place]);
    }
    return value;
}

/// Programs that write to a pipe do not know the size. They state 0, or nearly the largest signed
/// or unsigned number.
bool isKnown(std::uint64_t size, std::uint64_t width) {
    constexpr std::uint64_t largestWide = std::uint64_t{1} << 48;
    if (size == 0 || width == 8)
        return size > 0 && size < largestWide;
    const bool isNearlyLargest = size >= 0xFFFF0000 || (size >= 0x7F000000 && size <= 0x80000000);
    return !isNearlyLargest;
}

std::optional<std::uint64_t> endOfChunk(std::string_view head, const SoundChunk& chunk) {
    const std::uint64_t at = head.size() - chunk.length; // beyond the end if the head is short
    std::uint64_t width = chunk.width;
    std::uint64_t size = number(head, at + chunk.sizeAt, width, chunk.order);
    std::uint64_t begin = head.size() - chunk.counted;
    if (!reads(head, at, chunk.name)) {
        // In AVI, and if the file ends within its head, the size of the whole file is used.
        begin = 8;
        size = width == 4 ? number(head, 4, width, chunk.order) : 0;
    } else if (reads(head, 12, "ds64") && size == 0xFFFFFFFF) {
        // In RF64 and BW64, the first chunk has the sizes that 32 bits cannot hold.
        width = 8;
        size = number(head, 28, width, chunk.order);
    }
    return isKnown(size, width) ? std::optional(begin + size) : std::nullopt;
}

/// A number of variable length, as EBML has it: the zeros at its beginning are its length.
std::uint64_t widthAt(std::string_view bytes, std::uint64_t at) {
    return 1 + static_cast<std::uint64_t>(std::countl_zero(
                   static_cast<unsigned char>(number(bytes, at, 1, Order::bigEndian))));
}

std::uint64_t sizeAt(std::string_view bytes, std::uint64_t at) {
    const std::uint64_t width = widthAt(bytes, at);
    return number(bytes, at, width, Order::bigEndian) & ((std::uint64_t{1} << 7 * width) - 1);
}

/// Matroska and WebM: the end of the segment, which contains everything after a short header.
std::optional<std::uint64_t> endOfSegment(std::string_view head) {
    constexpr std::uint64_t tagLength = 4;
    const std::uint64_t segment = tagLength + widthAt(head, tagLength) + sizeAt(head, tagLength);
    if (!head.starts_with("\x1A\x45\xDF\xA3") || !reads(head, segment, "\x18\x53\x80\x67"))
        return std::nullopt;
    const std::uint64_t at = segment + tagLength;
    const std::uint64_t size = sizeAt(head, at);
    if (!isKnown(size, 8) || size == (std::uint64_t{1} << 7 * widthAt(head, at)) - 1)
        return std::nullopt;
    return at + widthAt(head, at) + size;
}

/// MP3: the size in the tag that encoders write into the first frame.
std::optional<std::uint64_t> endOfFrames(std::string_view head) {
    constexpr std::uint64_t searched = 64; ///< the tag is at most 36 bytes behind the frame's start
    std::uint64_t frame = 0;
    if (head.starts_with("ID3")) {
        for (std::uint64_t i = 6; i < 10; ++i) // seven bits of each byte
            frame = frame << 7 | number(head, i, 1, Order::bigEndian);
        frame += 10;
    }
    if (frame >= head.size() || !reads(head, frame, "\xFF"))
        return std::nullopt;
    const std::string_view start = head.substr(frame, searched);
    const std::uint64_t found = std::min(start.find("Xing"), start.find("Info"));
    if (found == std::string_view::npos)
        return std::nullopt;
    const std::uint64_t tag = frame + found;
    const std::uint64_t flags = number(head, tag + 4, 4, Order::bigEndian);
    const std::uint64_t size = number(head, tag + 8 + (flags & 1) * 4, 4, Order::bigEndian);
    if ((flags & 2) == 0 || size == 0)
        return std::nullopt;
    return frame + size;
}

} // namespace

std::optional<std::uint64_t> statedEnd(std::string_view head) {
    for (const SoundChunk& chunk : soundChunks) {
        if (head.starts_with(chunk.file))
            return endOfChunk(head, chunk);
    }
    const auto end = endOfSegment(head);
    return end ? end : endOfFrames(head);
}

} // namespace tessarune
