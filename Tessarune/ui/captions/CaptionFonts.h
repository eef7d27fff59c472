#pragma once

#include <QFont>
#include <cstdint>
#include <string_view>

namespace tessarune {

/// The font of captions in a language. One Chinese character has other shapes in Japan, Korea and
/// Taiwan; what is not said here is left to the order of the fonts on the computer. `size` is in
/// points of the caption settings, which are pixels at a scale of 1.
QFont captionFont(std::string_view language, std::int64_t size);

/// Names the face of everything else for texts of a locale ("zh_TW"), too. What Qt finds by itself
/// takes the weight of whatever was drawn first. Before there is a window.
void nameInterfaceFaces(std::string_view locale);

} // namespace tessarune
