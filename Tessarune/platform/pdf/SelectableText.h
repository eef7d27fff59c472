#pragma once

#include <QByteArray>
#include <QGlyphRun>
#include <QHash>
#include <QImage>
#include <QList>
#include <QPainter>
#include <QPointF>
#include <QRawFont>
#include <QString>
#include <QTextLayout>
#include <map>
#include <utility>
#include <vector>

namespace tessarune {

/// Draws text into a PDF of QPdfWriter so that selected text is the written text.
///
/// QPdfWriter maps each glyph to a character that the font has for it. That is the wrong one if a
/// font has one glyph for two characters (radicals for Chinese characters), a presentation form in
/// Arabic, and nothing at all for emoji. This class records each glyph's text as it is drawn; the
/// records replace the file's maps. Emoji are pictures in their fonts, which QPdfWriter leaves out:
/// they are drawn as pictures.
///
/// All text of the PDF must be drawn here, as QPdfWriter numbers fonts and glyphs in the order of
/// first use.
class SelectableText {
  public:
    /// Draws one line of `layout` with its top left corner at `position`.
    void draw(QPainter& painter, const QTextLayout& layout, const QTextLine& line,
              QPointF position);

    /// The finished PDF with the records appended; unchanged if its fonts differ from the recorded
    /// ones.
    QByteArray madeSelectable(const QByteArray& pdf) const;

  private:
    /// The glyphs of one font file, in the order in which they appeared; the PDF calls them 1, 2…
    struct Face {
        QHash<quint32, int> numbers;
        std::vector<QString> texts;
    };

    Face& faceOf(const QRawFont& font);
    bool noteGlyphs(const QGlyphRun& run);
    void noteTexts(const QTextLayout& layout, const QTextLine& line);
    void drawPictures(QPainter& painter, const QGlyphRun& run, QPointF origin);

    std::vector<Face> faces_;
    QHash<QByteArray, int> faceNumbers_; ///< by what tells font files apart
    std::map<std::pair<quint32, int>, QImage> pictures_;
};

} // namespace tessarune
