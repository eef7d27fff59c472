#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

/// The choices for the minutes of silence after which a session ends by itself.
namespace tessarune::AudioInactivityMinutes {

/// 0: never.
inline constexpr std::array<std::int64_t, 9> choices{0, 1, 2, 3, 4, 5, 10, 15, 20};

/// The meaning of a stored number: the number itself if it is one of the choices, otherwise 1.
constexpr std::int64_t counted(std::int64_t minutes) {
    return std::ranges::find(choices, minutes) != choices.end() ? minutes : 1;
}

} // namespace tessarune::AudioInactivityMinutes
