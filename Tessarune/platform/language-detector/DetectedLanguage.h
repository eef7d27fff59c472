#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

/// Detects the main language of `text`, or of its first 64 KiB, with CLD2. Returns CLD2's code
/// ("en", "zh", "zh-Hant"), or `nullopt` if the detection is not reliable, for example because the
/// text is too short, or if the text is not valid UTF-8. Any thread.
std::optional<std::string> detectedLanguage(std::string_view text);

} // namespace tessarune
