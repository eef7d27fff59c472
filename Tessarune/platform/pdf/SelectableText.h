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

/// Draws text into a PDF of QPdfWriter, so that whoever selects it there gets what was written.
///
/// QPdfWriter says of each glyph for which character it could stand, looking it up in the font.
/// That is another character where a font has one glyph for two (radicals for Chinese characters),
/// a presentation form in Arabic, and nothing at all for emoji. Here each glyph's text is noted as
/// it is drawn; the notes replace what the file says. Emoji are pictures in their fonts, which
/// QPdfWriter leaves out: they are drawn as pictures.
///
/// All text of the PDF must be drawn here, as QPdfWriter numbers fonts and glyphs in the order in
/// which they appear.
class SelectableText {
  public:
    /// Draws one line of `layout` with its top left corner at `position`.
    void draw(QPainter& painter, const QTextLayout& layout, const QTextLine& line,
              QPointF position);

    /// The finished PDF with the notes added at its end; unchanged if its fonts are not those that
    /// were drawn with.
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
