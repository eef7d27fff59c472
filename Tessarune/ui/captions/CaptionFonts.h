#pragma once

#include <QFont>
#include <cstdint>
#include <string_view>

namespace tessarune {

/// The font for captions in a language. One Chinese character has different shapes in Japan, Korea
/// and Taiwan; other languages use the order of the fonts on the computer. `size` is in points of
/// the caption settings, which are pixels at a scale of 1.
QFont captionFont(std::string_view language, std::int64_t size);

/// Sets the font of everything else for a locale ("zh_TW"), since Qt's own fallback takes the
/// weight of whatever was drawn first. Call before the first window.
void nameInterfaceFaces(std::string_view locale);

} // namespace tessarune
