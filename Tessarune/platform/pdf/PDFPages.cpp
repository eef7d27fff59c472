#include "Tessarune/platform/pdf/PDFPages.h"

#include "Tessarune/platform/pdf/PDFFonts.h"

#include <QTextLayout>
#include <QTextOption>

namespace tessarune {

namespace {

const QColor pageNumberColor = QColor::fromRgbF(0.596F, 0.635F, 0.702F);
constexpr double pageNumberSize = 9;
constexpr double lineSpacing = 1;
constexpr double unlimitedWidth = 100'000;

/// Breaks the layout's text into lines of at most `width`. Its first letter decides whether the
/// lines run from the left or from the right.
void layOut(QTextLayout& layout, double width) {
    QTextOption option;
    option.setTextDirection(Qt::LayoutDirectionAuto);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setUseDesignMetrics(true);
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine())
        line.setLineWidth(width);
    layout.endLayout();
}

QString oneParagraph(QString text) {
    return text.replace(QLatin1Char('\n'), QChar(QChar::LineSeparator));
}

} // namespace

PDFPages::PDFPages(QPdfWriter& writer, SelectableText& text)
    : writer_(writer), text_(text), painter_(&writer) {
    painter_.setRenderHint(QPainter::LosslessImageRendering);
}

PDFPages::~PDFPages() {
    drawPageNumber();
}

void PDFPages::addText(const QString& text, const QFont& font, const QColor& color, double left,
                       double right) {
    QTextLayout layout(oneParagraph(text), font, &writer_);
    layOut(layout, right - left);
    painter_.setPen(color);
    for (int i = 0; i < layout.lineCount(); ++i) {
        const QTextLine line = layout.lineAt(i);
        ensureRoom(line.height());
        text_.draw(painter_, layout, line, {left, y_});
        y_ += line.height() + lineSpacing;
    }
}

void PDFPages::addLabel(const QString& text, const QFont& font, const QColor& color, double left,
                        double lineHeight) {
    QTextLayout layout(text, font, &writer_);
    layOut(layout, unlimitedWidth);
    const QTextLine line = layout.lineAt(0);
    painter_.setPen(color);
    // Brings the label approximately to the baseline of the larger text beside it.
    text_.draw(painter_, layout, line, {left, y_ + (lineHeight - line.height()) * 0.66});
}

void PDFPages::addGap(double height) {
    if (y_ > margin)
        y_ = std::min(y_ + height, bottom());
}

void PDFPages::ensureRoom(double height) {
    if (y_ > margin && y_ + height > bottom())
        nextPage();
}

void PDFPages::beginBar(double x, double width, const QColor& color) {
    bar_ = Bar{x, width, color, y_};
}

void PDFPages::endBar() {
    drawBar();
    bar_.reset();
}

void PDFPages::drawBar() {
    if (bar_ && y_ > bar_->top)
        painter_.fillRect(QRectF(bar_->x, bar_->top, bar_->width, y_ - bar_->top), bar_->color);
}

void PDFPages::nextPage() {
    const QPen textPen = painter_.pen(); // drawing the page number changes it
    drawBar();
    drawPageNumber();
    writer_.newPage();
    painter_.setPen(textPen);
    ++page_;
    y_ = margin;
    if (bar_)
        bar_->top = y_;
}

void PDFPages::drawPageNumber() {
    QTextLayout layout(QString::number(page_), PDFFonts::text(pageNumberSize), &writer_);
    layOut(layout, unlimitedWidth);
    const QTextLine line = layout.lineAt(0);
    painter_.setPen(pageNumberColor);
    text_.draw(
        painter_, layout, line,
        {(pageWidth - line.naturalTextWidth()) / 2, bottom() + (margin - line.height()) / 2});
}

} // namespace tessarune
