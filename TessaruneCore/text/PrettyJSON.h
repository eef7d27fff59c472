#pragma once

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>

/// JSON for files that people and comparison tools read: two blanks an indentation, keys sorted,
/// doubles in the shortest form that reads back the same (the library's own printer now and then
/// gives a digit more).
namespace tessarune::PrettyJSON {

/// Nothing if the value holds a number that is not finite. Bytes that are no UTF-8 become U+FFFD.
std::optional<std::string> encode(const nlohmann::json& value);

} // namespace tessarune::PrettyJSON
