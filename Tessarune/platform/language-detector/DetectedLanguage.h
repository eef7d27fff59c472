#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// The code of the language that most of `text` is in ("en", "zh"), by CLD2; `nullopt` if the text
/// is too short. Any thread.
std::optional<std::string> detectedLanguage(std::string_view text);

} // namespace tessarune
