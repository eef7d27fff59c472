#include "TessaruneCore/text/TextHash.h"

#include <cstdint>

namespace tessarune {

std::string fnv1a64Hex(std::string_view text) {
    constexpr std::uint64_t offsetBasis = 0xcbf29ce484222325;
    constexpr std::uint64_t prime = 0x100000001b3;
    std::uint64_t hash = offsetBasis;
    for (const char byte : text) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= prime;
    }
    std::string digits(16, '0');
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, hash >>= 4)
        *digit = "0123456789abcdef"[hash & 0xf];
    return digits;
}

} // namespace tessarune
