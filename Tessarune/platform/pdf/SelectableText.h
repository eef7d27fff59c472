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
#include <tuple>
#include <vector>

namespace tessarune {

/// Draws text into a PDF of QPdfWriter so that a reader can select and copy exactly this text.
///
/// QPdfWriter maps each glyph to a character that the font has for it. If the font uses one glyph
/// for two characters, such as a radical and a Chinese character, the mapped character can be the
/// wrong one. Arabic letters are mapped to presentation forms, and emoji to no character at all.
/// This class records each glyph's text when it is drawn; the records replace the file's maps.
/// QPdfWriter also omits the pictures that emoji fonts contain; this class draws them as images.
///
/// All text of the PDF must be drawn through this class, because QPdfWriter numbers fonts and
/// glyphs in the order of first use.
class SelectableText {
  public:
    /// Draws one line of `layout` with its top left corner at `position`.
    void draw(QPainter& painter, const QTextLayout& layout, const QTextLine& line,
              QPointF position);

    /// Returns `pdf`, which QPdfWriter has finished, with the records appended. The records replace
    /// the file's maps; see PDFUnicodeMaps::replaced.
    QByteArray madeSelectable(const QByteArray& pdf) const;

  private:
    /// The glyphs of one font file in the order of first use; the PDF numbers them 1, 2…
    struct Face {
        QHash<quint32, int> numbers;
        std::vector<QString> texts;
    };

    Face& faceOf(const QRawFont& font);
    bool recordGlyphs(const QGlyphRun& run);
    void recordTexts(const QTextLayout& layout, const QTextLine& line);
    void drawPictures(QPainter& painter, const QGlyphRun& run, QPointF origin);

    std::vector<Face> faces_;
    QHash<QByteArray, int> faceNumbers_; ///< by the tables that identify a font file
    std::map<std::tuple<QString, quint32, int>, QImage> pictures_; ///< by family, glyph and size
};

} // namespace tessarune
