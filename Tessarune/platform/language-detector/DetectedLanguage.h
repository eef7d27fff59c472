#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// The code of the language that most of `text` is in ("en", "zh"), by CLD2; nothing where the text
/// is too short to say. Any thread.
std::optional<std::string> detectedLanguage(std::string_view text);

} // namespace tessarune
