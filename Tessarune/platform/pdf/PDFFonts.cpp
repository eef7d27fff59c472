#include "Tessarune/platform/pdf/PDFFonts.h"

#include <QGuiApplication>
#include <QStringList>
#include <algorithm>

namespace tessarune::PDFFonts {

namespace {

QString place = QStringLiteral("SC");

bool contains(const QString& text, QChar::Script script) {
    return std::ranges::any_of(text, [&](QChar character) { return character.script() == script; });
}

QFont ofFamilies(QStringList families, double size) {
    // Characters that the first faces lack come from the next ones: colour emoji, then Chinese,
    // Japanese and Korean; Qt finds faces for the other scripts.
    families << QGuiApplication::font().family() << QStringLiteral("Noto Color Emoji")
             << QStringLiteral("Noto Sans CJK ") + place;
    QFont font;
    font.setFamilies(families);
    font.setPointSizeF(size);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

} // namespace

void choosePlace(const QString& sample) {
    if (contains(sample, QChar::Script_Hiragana) || contains(sample, QChar::Script_Katakana))
        place = QStringLiteral("JP");
    else if (contains(sample, QChar::Script_Hangul))
        place = QStringLiteral("KR");
    else
        place = QStringLiteral("SC");
}

QFont text(double size) {
    return ofFamilies({QStringLiteral("Noto Sans")}, size);
}

QFont digits(double size) {
    return ofFamilies({QStringLiteral("Noto Sans Mono"), QStringLiteral("DejaVu Sans Mono")}, size);
}

} // namespace tessarune::PDFFonts
