#include "TessaruneCore/translation/EmojiFlagSupport.h"

#include <utility>

namespace tessarune::EmojiFlagSupport {

namespace {
GlyphTest& glyphTest() {
    static GlyphTest test;
    return test;
}
} // namespace

std::string_view resolveTraditionalChineseFlag(bool taiwanFlagRenders) {
    return taiwanFlagRenders ? taiwanFlag : hongKongFlag;
}

void setGlyphTest(GlyphTest test) {
    glyphTest() = std::move(test);
}

bool rendersAsSingleEmojiGlyph(std::string_view text) {
    return !glyphTest() || glyphTest()(text);
}

std::string_view traditionalChineseFlag() {
    static const std::string_view flag =
        resolveTraditionalChineseFlag(rendersAsSingleEmojiGlyph(taiwanFlag));
    return flag;
}

} // namespace tessarune::EmojiFlagSupport
