#pragma once

#include <QFont>
#include <cstdint>
#include <string_view>

namespace tessarune {

/// Returns the font for captions in a language. A Chinese character has different shapes in Japan,
/// Korea and Taiwan; all other languages use those of mainland China. `size` is in points of the
/// caption settings, which are device-independent pixels at a `textScale` of 1.
QFont captionFont(std::string_view language, std::int64_t size, double textScale);

/// Sets the fallback fonts of all other texts for a locale such as "zh_TW", because Qt's own
/// fallback takes the weight of whatever was drawn first. Call before the first window.
void nameInterfaceFaces(std::string_view locale);

/// Whether the font of the flags in the settings draws the text as one glyph. It draws an unknown
/// flag as two letters. Any thread, once there is an application object.
bool rendersAsOneFlag(std::string_view text);

} // namespace tessarune
