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

/// Pages that fill from top to bottom. Each line stands whole on one page. Lengths are points.
class PDFPages {
  public:
    static constexpr double pageWidth = 612;
    static constexpr double pageHeight = 792;
    static constexpr double margin = 54;

    PDFPages(QPdfWriter& writer, SelectableText& text);
    /// Numbers the last page.
    ~PDFPages();
    PDFPages(const PDFPages&) = delete;

    /// A paragraph from `left` to `right`, as many lines as it needs.
    void addText(const QString& text, const QFont& font, const QColor& color, double left,
                 double right);
    /// Room, unless a page begins here.
    void addGap(double height);

    double heightOf(const QFont& font) const { return QFontMetricsF(font, &writer_).height(); }

    /// A label beside the line that is about to be added, which is so high. It takes no room.
    void addLabel(const QString& text, const QFont& font, const QColor& color, double left,
                  double lineHeight);
    /// From here to `endBar` a bar is drawn at `x`, on every page.
    void beginBar(double x, double width, const QColor& color);
    void endBar();
    /// A new page, if less than `height` is left of this one.
    void require(double height);

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
