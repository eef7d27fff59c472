#include "Tessarune/ui/captions/CaptionFonts.h"

#include <QGlyphRun>
#include <QGuiApplication>
#include <QStringList>
#include <QTextLayout>
#include <algorithm>
#include <cmath>

namespace tessarune {

namespace {

/// The region whose glyph shapes a language uses, as in the names of the fonts.
QString regionOf(std::string_view language) {
    if (language.starts_with("ja"))
        return QStringLiteral("JP");
    if (language.starts_with("ko"))
        return QStringLiteral("KR");
    if (language.starts_with("zh-Hant") || language.starts_with("zh_TW") ||
        language.starts_with("zh_HK"))
        return QStringLiteral("TC");
    return QStringLiteral("SC");
}

} // namespace

void nameInterfaceFaces(std::string_view locale) {
    const QString family = QGuiApplication::font().family();
    const bool isChinese = locale.starts_with("zh");
    if (!isChinese) // without this, Latin letters and quotation marks may have Chinese widths
        QFont::insertSubstitution(family, QStringLiteral("Noto Sans"));
    QFont::insertSubstitution(family, QStringLiteral("Noto Sans CJK ") + regionOf(locale));
}

bool rendersAsOneFlag(std::string_view text) {
    QFont font;
    font.setFamily(QStringLiteral("Noto Color Emoji")); // as in ResourceRows.qml
    QTextLayout layout(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())), font);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    const QList<QGlyphRun> runs = layout.glyphRuns();
    return runs.size() == 1 && runs.front().glyphIndexes().size() == 1;
}

QFont captionFont(std::string_view language, std::int64_t size, double textScale) {
    QFont font = QGuiApplication::font();
    // Latin text has Noto Sans or, if it is not installed, the desktop's font. Chinese, Japanese
    // and Korean text has a font of matching weight and height.
    font.setFamilies({QStringLiteral("Noto Sans"), font.family(),
                      QStringLiteral("Noto Sans CJK ") + regionOf(language)});
    const auto usable = static_cast<double>(std::clamp<std::int64_t>(size, 8, 200));
    font.setPixelSize(static_cast<int>(std::lround(usable * textScale)));
    font.setWeight(QFont::Medium);
    font.setStyleStrategy(QFont::PreferAntialias);
    return font;
}

} // namespace tessarune
