#include "Tessarune/platform/pdf/PDFFonts.h"

#include <QGuiApplication>
#include <QStringList>
#include <algorithm>

namespace tessarune::PDFFonts {

namespace {

QString region = QStringLiteral("SC");

bool contains(const QString& text, QChar::Script script) {
    return std::ranges::any_of(text, [&](QChar character) { return character.script() == script; });
}

/// Whether a Chinese text is traditional: compares how often frequent characters have either form.
bool isTraditional(const QString& text) {
    const auto count = [&](QStringView characters) {
        return std::ranges::count_if(text, [&](QChar each) { return characters.contains(each); });
    };
    return count(u"這個們來時說對為國後過還會學開關點裡種樣麼與從經發現實話間問題") >
           count(u"这个们来时说对为国后过还会学开关点里种样么与从经发现实话间问题");
}

QFont ofFamilies(QStringList families, double size) {
    // Characters that the first fonts lack come from the next ones: colour emoji, then Chinese,
    // Japanese and Korean. Qt finds fonts for the other scripts.
    families << QGuiApplication::font().family() << QStringLiteral("Noto Color Emoji")
             << QStringLiteral("Noto Sans CJK ") + region;
    QFont font;
    font.setFamilies(families);
    font.setPointSizeF(size);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

} // namespace

void chooseRegion(const QString& sample) {
    if (contains(sample, QChar::Script_Hiragana) || contains(sample, QChar::Script_Katakana))
        region = QStringLiteral("JP");
    else if (contains(sample, QChar::Script_Hangul))
        region = QStringLiteral("KR");
    else
        region = isTraditional(sample) ? QStringLiteral("TC") : QStringLiteral("SC");
}

QFont text(double size) {
    return ofFamilies({QStringLiteral("Noto Sans")}, size);
}

QFont digits(double size) {
    return ofFamilies({QStringLiteral("Noto Sans Mono"), QStringLiteral("DejaVu Sans Mono")}, size);
}

} // namespace tessarune::PDFFonts
