#pragma once

#include "Tessarune/platform/pdf/SelectableText.h"

#include <QColor>
#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPdfWriter>
#include <QString>
#include <optional>

namespace tessarune {

/// Pages that fill from top to bottom. A line never crosses a page break. Lengths are in points.
class PDFPages {
  public:
    static constexpr double pageWidth = 612;
    static constexpr double pageHeight = 792;
    static constexpr double margin = 54;

    PDFPages(QPdfWriter& writer, SelectableText& text);
    /// Numbers the last page.
    ~PDFPages();
    PDFPages(const PDFPages&) = delete;

    /// Adds a paragraph between `left` and `right`, in as many lines as it needs.
    void addText(const QString& text, const QFont& font, const QColor& color, double left,
                 double right);
    /// Adds vertical space, unless at the top of a page.
    void addGap(double height);

    double heightOf(const QFont& font) const { return QFontMetricsF(font, &writer_).height(); }

    /// Adds a label beside the next line, whose height is `lineHeight`. Takes no vertical space.
    void addLabel(const QString& text, const QFont& font, const QColor& color, double left,
                  double lineHeight);
    /// Draws a bar at `x` from here to `endBar`, on every page in between.
    void beginBar(double x, double width, const QColor& color);
    void endBar();
    /// Starts a new page if the current one is not empty and has less room than `height`.
    void ensureRoom(double height);

  private:
    struct Bar {
        double x = 0;
        double width = 0;
        QColor color;
        double top = 0;
    };

    void nextPage();
    void drawBar();
    void drawPageNumber();
    static constexpr double bottom() { return pageHeight - margin; }

    QPdfWriter& writer_;
    SelectableText& text_;
    QPainter painter_;
    std::optional<Bar> bar_;
    double y_ = margin;
    int page_ = 1;
};

} // namespace tessarune
