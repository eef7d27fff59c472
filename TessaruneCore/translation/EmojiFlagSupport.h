#pragma once

#include <functional>
#include <string_view>

/// Picks the flag of traditional Chinese, the only flag that depends on the machine: the fonts of
/// some regions show two letters instead of Taiwan's flag.
namespace tessarune::EmojiFlagSupport {

inline constexpr std::string_view taiwanFlag = "🇹🇼";
inline constexpr std::string_view hongKongFlag = "🇭🇰";

std::string_view resolveTraditionalChineseFlag(bool taiwanFlagRenders);

/// Lays out a text and returns whether it renders as one glyph.
using GlyphTest = std::function<bool(std::string_view text)>;

/// A program with a display calls this once at start, before the first call of
/// `traditionalChineseFlag`. Without a test, `rendersAsSingleEmojiGlyph` returns true.
void setGlyphTest(GlyphTest test);

bool rendersAsSingleEmojiGlyph(std::string_view text);

/// Decided at the first call and cached for the life of the process. Any thread.
std::string_view traditionalChineseFlag();

} // namespace tessarune::EmojiFlagSupport
