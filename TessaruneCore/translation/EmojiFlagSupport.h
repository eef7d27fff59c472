#pragma once

#include <functional>
#include <string_view>

/// Picks the one flag whose choice depends on the machine: some regions' fonts show two letters
/// instead of a flag.
namespace tessarune::EmojiFlagSupport {

inline constexpr std::string_view taiwanFlag = "🇹🇼";
inline constexpr std::string_view hongKongFlag = "🇭🇰";

std::string_view resolveTraditionalChineseFlag(bool taiwanFlagRenders);

/// Lays out a text and says whether it comes out as one glyph.
using GlyphTest = std::function<bool(std::string_view text)>;

/// A program with a display sets its text engine's test once, at its start, before anything asks
/// for `traditionalChineseFlag`. Without one every flag counts as rendered.
void setGlyphTest(GlyphTest test);

bool rendersAsSingleEmojiGlyph(std::string_view text);

/// Decided at the first call and kept for the life of the process. Any thread.
std::string_view traditionalChineseFlag();

} // namespace tessarune::EmojiFlagSupport
