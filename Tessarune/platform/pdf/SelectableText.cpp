#include "Tessarune/platform/pdf/SelectableText.h"

#include "Tessarune/platform/pdf/PDFUnicodeMaps.h"

#include <QTextBoundaryFinder>

namespace tessarune {

namespace {

/// The resolution of emoji pictures, as a multiple of the page's.
constexpr double pictureScale = 5;

bool hasPictures(const QRawFont& font) {
    return !font.fontTable("CBDT").isEmpty() || !font.fontTable("sbix").isEmpty();
}

/// A piece of text and the glyphs that show it.
struct Cluster {
    QString text;
    QList<QGlyphRun> runs;
};

bool isSameGlyph(const QList<QGlyphRun>& a, const QList<QGlyphRun>& b) {
    return a.size() == 1 && b.size() == 1 && a[0].glyphIndexes() == b[0].glyphIndexes() &&
           a[0].positions() == b[0].positions();
}

/// PDF readers reverse right-to-left text character by character, even within one glyph. Hence the
/// ligatures of lam and alef, which occur in every Arabic text, become the single characters that
/// Unicode has for them.
QString asSingleCharacter(const QString& text) {
    static const std::pair<char16_t, char16_t> ligatures[] = {
        {0x0622, 0xFEF5}, {0x0623, 0xFEF7}, {0x0625, 0xFEF9}, {0x0627, 0xFEFB}};
    if (text.size() == 2 && text[0] == QChar(0x0644)) {
        for (const auto& [alef, ligature] : ligatures) {
            if (text[1] == QChar(alef))
                return QString(QChar(ligature));
        }
    }
    return text;
}

/// Splits a line into clusters: single characters, or all characters of a ligature.
std::vector<Cluster> clustersOf(const QTextLayout& layout, const QTextLine& line) {
    const QString text = layout.text().mid(line.textStart(), line.textLength());
    QTextBoundaryFinder breaks(QTextBoundaryFinder::Grapheme, text);
    std::vector<Cluster> clusters;
    for (qsizetype at = 0, end = breaks.toNextBoundary(); end > 0;
         at = end, end = breaks.toNextBoundary()) {
        const QString character = text.mid(at, end - at);
        auto runs =
            line.glyphRuns(line.textStart() + static_cast<int>(at), static_cast<int>(end - at));
        if (!clusters.empty() && (runs.isEmpty() || isSameGlyph(runs, clusters.back().runs)))
            clusters.back().text += character;
        else
            clusters.push_back({character, std::move(runs)});
    }
    return clusters;
}

} // namespace

SelectableText::Face& SelectableText::faceOf(const QRawFont& font) {
    const QByteArray key = font.fontTable("head") + font.fontTable("name");
    const auto found = faceNumbers_.constFind(key);
    if (found != faceNumbers_.constEnd())
        return faces_[static_cast<std::size_t>(*found)];
    faceNumbers_.insert(key, static_cast<int>(faces_.size()));
    faces_.emplace_back();
    return faces_.back();
}

/// Numbers the glyphs of a run. Returns whether any is new.
bool SelectableText::recordGlyphs(const QGlyphRun& run) {
    Face& face = faceOf(run.rawFont());
    const std::size_t before = face.texts.size();
    for (const quint32 glyph : run.glyphIndexes()) {
        if (!face.numbers.contains(glyph)) {
            face.numbers.insert(glyph, static_cast<int>(face.texts.size()));
            face.texts.emplace_back();
        }
    }
    return face.texts.size() > before;
}

/// Assigns the text of each cluster to its first glyph, unless that glyph has a text already.
void SelectableText::recordTexts(const QTextLayout& layout, const QTextLine& line) {
    for (const Cluster& cluster : clustersOf(layout, line)) {
        bool isFirstDone = false;
        for (const QGlyphRun& run : cluster.runs) {
            Face& face = faceOf(run.rawFont());
            for (const quint32 glyph : run.glyphIndexes()) {
                const auto number = face.numbers.constFind(glyph);
                if (number == face.numbers.constEnd())
                    continue;
                QString& text = face.texts[static_cast<std::size_t>(*number)];
                if (!isFirstDone && text.isEmpty())
                    text = asSingleCharacter(cluster.text);
                isFirstDone = true;
            }
        }
    }
}

void SelectableText::draw(QPainter& painter, const QTextLayout& layout, const QTextLine& line,
                          QPointF position) {
    // The positions of runs are relative to the layout's origin.
    const QPointF origin = position - line.position();
    bool hasNew = false;
    for (const QGlyphRun& run : line.glyphRuns()) {
        hasNew = recordGlyphs(run) || hasNew;
        painter.drawGlyphRun(origin, run);
        if (hasPictures(run.rawFont()))
            drawPictures(painter, run, origin);
    }
    if (hasNew)
        recordTexts(layout, line);
}

void SelectableText::drawPictures(QPainter& painter, const QGlyphRun& run, QPointF origin) {
    const auto glyphs = run.glyphIndexes();
    const auto positions = run.positions();
    for (qsizetype i = 0; i < glyphs.size(); ++i) {
        QGlyphRun one;
        one.setRawFont(run.rawFont());
        one.setGlyphIndexes({glyphs[i]});
        one.setPositions({QPointF()});
        const QRectF box = one.boundingRect().adjusted(-1, -1, 1, 1);
        if (box.isEmpty())
            continue;
        QImage& picture = pictures_[{run.rawFont().familyName(), glyphs[i],
                                     static_cast<int>(run.rawFont().pixelSize() * 10)}];
        if (picture.isNull()) {
            picture =
                QImage((box.size() * pictureScale).toSize(), QImage::Format_ARGB32_Premultiplied);
            picture.fill(Qt::transparent);
            QPainter drawing(&picture);
            drawing.scale(pictureScale, pictureScale);
            drawing.setRenderHint(QPainter::SmoothPixmapTransform);
            drawing.drawGlyphRun(-box.topLeft(), one);
        }
        painter.drawImage(box.translated(origin + positions[i]), picture);
    }
}

QByteArray SelectableText::madeSelectable(const QByteArray& pdf) const {
    std::vector<PDFUnicodeMaps::Map> maps;
    maps.reserve(faces_.size());
    for (const Face& face : faces_)
        maps.push_back(face.texts);
    return PDFUnicodeMaps::replaced(pdf, maps);
}

} // namespace tessarune
