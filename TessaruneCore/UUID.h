#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// A 128-bit identifier (RFC 9562, version 4). Its text form has upper-case digits.
struct UUID {
    std::array<std::uint8_t, 16> bytes{};

    /// A new random identifier. Any thread.
    static UUID random();

    /// Parses 36 characters of the form 8-4-4-4-12, in either case; `nullopt` for any other text.
    static std::optional<UUID> parse(std::string_view text);

    std::string text() const;

    auto operator<=>(const UUID&) const = default;
};

/// A source of new identifiers. The program uses `UUID::random`; a replay uses a counter, so that
/// the same log produces the same bytes.
using UUIDSource = std::function<UUID()>;

/// Identifiers 1, 2, 3, … in the form of version 4.
UUIDSource countingUUIDSource();

} // namespace tessarune

template <>
struct std::hash<tessarune::UUID> {
    std::size_t operator()(const tessarune::UUID& id) const noexcept {
        constexpr std::size_t fnvPrime = 1099511628211ULL;
        std::size_t value = 0;
        for (auto byte : id.bytes)
            value = value * fnvPrime ^ byte;
        return value;
    }
};
