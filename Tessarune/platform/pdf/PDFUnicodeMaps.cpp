#include "Tessarune/platform/pdf/PDFUnicodeMaps.h"

#include <QList>
#include <algorithm>

namespace tessarune::PDFUnicodeMaps {

namespace {

constexpr qsizetype maximumMappingsInBlock = 100;

/// The object numbers of a font and of its map.
struct FontObjects {
    int font = 0;
    int map = 0;
};

/// The number at `at`, after blanks; 0 if there is none.
int numberFrom(const QByteArray& text, qsizetype at) {
    while (at < text.size() && text[at] == ' ')
        ++at;
    qsizetype end = at;
    while (end < text.size() && text[end] >= '0' && text[end] <= '9')
        ++end;
    return text.mid(at, end - at).toInt();
}

/// The fonts in the order of their object numbers, which is that of first use.
std::vector<FontObjects> fontsOf(const QByteArray& pdf) {
    std::vector<FontObjects> fonts;
    const QByteArray mark = "/Subtype /Type0\n";
    const QByteArray mapKey = "/ToUnicode ";
    for (qsizetype at = pdf.indexOf(mark); at >= 0; at = pdf.indexOf(mark, at + 1)) {
        const qsizetype object = pdf.lastIndexOf(" 0 obj", at);
        const qsizetype line = pdf.lastIndexOf('\n', object) + 1;
        const qsizetype end = pdf.indexOf(">>", at);
        const qsizetype map = pdf.indexOf(mapKey, at);
        if (object < 0 || end < 0 || map < 0 || map > end)
            return {};
        fonts.push_back({numberFrom(pdf, line), numberFrom(pdf, map + mapKey.size())});
    }
    std::ranges::sort(fonts, {}, &FontObjects::font);
    return fonts;
}

QByteArray hex(uint number) {
    return QByteArray::number(number, 16).rightJustified(4, '0').toUpper();
}

QByteArray stream(const Map& map) {
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

QByteArray replaced(const QByteArray& pdf, const std::vector<Map>& maps) {
    const std::vector<FontObjects> fonts = fontsOf(pdf);
    const qsizetype trailer = pdf.lastIndexOf("trailer\n<<");
    const qsizetype trailerEnd = pdf.indexOf(">>", trailer);
    const qsizetype start = pdf.lastIndexOf("startxref\n");
    if (fonts.size() != maps.size() || trailer < 0 || trailerEnd < 0 || start < trailerEnd)
        return pdf;
    QByteArray result = pdf;
    QByteArray table = "xref\n";
    for (std::size_t i = 0; i < fonts.size(); ++i) {
        const QByteArray number = QByteArray::number(fonts[i].map);
        table += number + " 1\n" + QByteArray::number(result.size()).rightJustified(10, '0') +
                 " 00000 n \n";
        const QByteArray map = stream(maps[i]);
        result += number + " 0 obj\n<< /Length " + QByteArray::number(map.size()) +
                  " >>\nstream\n" + map + "\nendstream\nendobj\n";
    }
    const qsizetype tableStart = result.size();
    result += table + pdf.mid(trailer, trailerEnd - trailer) + "/Prev " +
              QByteArray::number(numberFrom(pdf, start + 10)) + "\n>>\nstartxref\n" +
              QByteArray::number(tableStart) + "\n%%EOF\n";
    return result;
}

} // namespace tessarune::PDFUnicodeMaps
