#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// Detects the main language of `text` with CLD2. Returns its code ("en", "zh"), or `nullopt` if
/// the detection is not reliable, for example because the text is too short. Any thread.
std::optional<std::string> detectedLanguage(std::string_view text);

} // namespace tessarune
