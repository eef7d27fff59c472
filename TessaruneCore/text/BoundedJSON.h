#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string_view>

/// JSON from files that anybody may have written.
namespace tessarune::BoundedJSON {

/// Deeper nesting than any file of ours has; walking over a value recurses once for each level.
inline constexpr int maximumDepth = 100;

/// A discarded value (`is_discarded()`) if the text is no JSON, is nested too deeply or holds a
/// number beyond a double. Never throws.
nlohmann::json parse(std::string_view text);

} // namespace tessarune::BoundedJSON
