#include "Tessarune/platform/pdf/PDFUnicodeMaps.h"

#include <algorithm>

namespace tessarune::PDFUnicodeMaps {

namespace {

constexpr qsizetype maximumMappingsInBlock = 100; // the limit of the CMap format

/// The object numbers of a font and of its map.
struct FontObjects {
    int font = 0;
    int map = 0;
};

/// The decimal number at `at`, which blanks may precede; 0 if there is none.
int numberFrom(const QByteArray& text, qsizetype at) {
    while (at < text.size() && text[at] == ' ')
        ++at;
    qsizetype end = at;
    while (end < text.size() && text[end] >= '0' && text[end] <= '9')
        ++end;
    return text.mid(at, end - at).toInt();
}

/// The composite fonts, sorted by object number. This is the order of their first use, because
/// QPdfWriter numbers a font when it is first used. Empty if the map of any font is not found.
std::vector<FontObjects> fontsOf(const QByteArray& pdf) {
    std::vector<FontObjects> fonts;
    const QByteArray mark = "/Subtype /Type0\n";
    const QByteArray mapKey = "/ToUnicode ";
    for (qsizetype at = pdf.indexOf(mark); at >= 0; at = pdf.indexOf(mark, at + 1)) {
        const qsizetype object = pdf.lastIndexOf(" 0 obj", at);
        const qsizetype line = pdf.lastIndexOf('\n', object) + 1;
        const qsizetype end = pdf.indexOf(">>", at);
        const qsizetype mapEntry = pdf.indexOf(mapKey, at);
        if (object < 0 || end < 0 || mapEntry < 0 || mapEntry > end)
            return {};
        fonts.push_back({numberFrom(pdf, line), numberFrom(pdf, mapEntry + mapKey.size())});
    }
    std::ranges::sort(fonts, {}, &FontObjects::font);
    return fonts;
}

QByteArray hex(uint number) {
    return QByteArray::number(number, 16).rightJustified(4, '0').toUpper();
}

/// A map in the PDF's format, a CMap. Each line has a glyph and its text as UTF-16; the lines are
/// grouped in blocks.
QByteArray cmapOf(const Map& map) {
    QByteArray mappings;
    QByteArray block;
    qsizetype inBlock = 0;
    const auto endBlock = [&] {
        if (inBlock > 0)
            mappings += QByteArray::number(inBlock) + " beginbfchar\n" + block + "endbfchar\n";
        block.clear();
        inBlock = 0;
    };
    for (std::size_t i = 0; i < map.size(); ++i) {
        if (map[i].isEmpty())
            continue;
        block += '<' + hex(static_cast<uint>(i) + 1) + "> <";
        for (const QChar unit : map[i])
            block += hex(unit.unicode());
        block += ">\n";
        if (++inBlock == maximumMappingsInBlock)
            endBlock();
    }
    endBlock();
    return "/CIDInit /ProcSet findresource begin\n12 dict begin\nbegincmap\n"
           "/CIDSystemInfo << /Registry (Adobe) /Ordering (UCS) /Supplement 0 >> def\n"
           "/CMapName /Adobe-Identity-UCS def\n/CMapType 2 def\n"
           "1 begincodespacerange\n<0000> <FFFF>\nendcodespacerange\n" +
           mappings + "endcmap\nCMapName currentdict /CMap defineresource pop\nend\nend\n";
}

} // namespace

// Appends an incremental update: new versions of the map objects, a table of their positions, and a
// copy of the trailer that points to the previous table. A reader takes the newest version of each
// object.
QByteArray replaced(const QByteArray& pdf, const std::vector<Map>& maps) {
    const QByteArray startKey = "startxref\n"; // precedes the position of the table
    const std::vector<FontObjects> fonts = fontsOf(pdf);
    const qsizetype trailer = pdf.lastIndexOf("trailer\n<<");
    const qsizetype trailerEnd = pdf.indexOf(">>", trailer);
    const qsizetype start = pdf.lastIndexOf(startKey);
    if (fonts.size() != maps.size() || trailer < 0 || trailerEnd < 0 || start < trailerEnd)
        return pdf;
    QByteArray result = pdf;
    QByteArray table = "xref\n";
    for (std::size_t i = 0; i < fonts.size(); ++i) {
        const QByteArray number = QByteArray::number(fonts[i].map);
        table += number + " 1\n" + QByteArray::number(result.size()).rightJustified(10, '0') +
                 " 00000 n \n";
        const QByteArray cmap = cmapOf(maps[i]);
        result += number + " 0 obj\n<< /Length " + QByteArray::number(cmap.size()) +
                  " >>\nstream\n" + cmap + "\nendstream\nendobj\n";
    }
    const qsizetype tableStart = result.size();
    result += table + pdf.mid(trailer, trailerEnd - trailer) + "/Prev " +
              QByteArray::number(numberFrom(pdf, start + startKey.size())) + "\n>>\nstartxref\n" +
              QByteArray::number(tableStart) + "\n%%EOF\n";
    return result;
}

} // namespace tessarune::PDFUnicodeMaps
