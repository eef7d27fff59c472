#include "TessaruneCore/UUID.h"

#include <random>

namespace tessarune {

namespace {

constexpr std::size_t textLength = 36;

void markVersion4(UUID& id) {
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0F) | 0x40);
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);
}

int digitValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool dashBefore(std::size_t byte) {
    return byte == 4 || byte == 6 || byte == 8 || byte == 10;
}

} // namespace

UUID UUID::random() {
    thread_local std::random_device device;
    UUID id;
    for (std::size_t i = 0; i < id.bytes.size(); i += 4) {
        const std::uint32_t word = device();
        for (std::size_t j = 0; j < 4; ++j)
            id.bytes[i + j] = static_cast<std::uint8_t>(word >> (8 * j));
    }
    markVersion4(id);
    return id;
}

std::optional<UUID> UUID::parse(std::string_view text) {
    if (text.size() != textLength)
        return std::nullopt;
    UUID id;
    std::size_t at = 0;
    for (std::size_t i = 0; i < id.bytes.size(); ++i) {
        if (dashBefore(i) && text[at++] != '-')
            return std::nullopt;
        const int high = digitValue(text[at++]);
        const int low = digitValue(text[at++]);
        if (high < 0 || low < 0)
            return std::nullopt;
        id.bytes[i] = static_cast<std::uint8_t>(high << 4 | low);
    }
    return id;
}

std::string UUID::text() const {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(textLength);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (dashBefore(i))
            out += '-';
        out += digits[bytes[i] >> 4];
        out += digits[bytes[i] & 0x0F];
    }
    return out;
}

UUIDSource countingUUIDSource() {
    return [count = std::uint64_t{0}]() mutable {
        UUID id;
        std::uint64_t rest = ++count;
        for (std::size_t i = 16; i-- > 8; rest >>= 8)
            id.bytes[i] = static_cast<std::uint8_t>(rest);
        markVersion4(id);
        return id;
    };
}

} // namespace tessarune
