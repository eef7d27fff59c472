#include "Tessarune/platform/pdf/HistoryTranscriptPDFWriter.h"

#include "Tessarune/platform/pdf/PDFFonts.h"
#include "Tessarune/platform/pdf/PDFPages.h"
#include "Tessarune/platform/pdf/SelectableText.h"

#include <QBuffer>
#include <QPageSize>
#include <QPdfWriter>
#include <string_view>

namespace tessarune::HistoryTranscriptPDFWriter {

namespace {

const QColor ink(0x1d, 0x24, 0x30);
const QColor softInk(0x5b, 0x66, 0x75);
const QColor faintInk(0x98, 0xa2, 0xb3);
const QColor barColor(0xd5, 0xdc, 0xe6);

constexpr double titleSize = 22;
constexpr double noteSize = 11.5;
constexpr double timeSize = 9.5;
constexpr double sourceSize = 13.5;
constexpr double translationSize = 11.5;

constexpr double gapAfterHeader = 18;
constexpr double gapAfterRow = 10;
constexpr double gapAfterTitle = 8;
constexpr double gapAfterSource = 5;

constexpr double barWidth = 2;
constexpr double gapAfterBar = 8;
constexpr double timeColumn = 44;
constexpr int pointsPerInch = 72;

constexpr double left = PDFPages::margin;
constexpr double right = PDFPages::pageWidth - PDFPages::margin;

QString qt(const std::string& text) {
    return QString::fromStdString(text);
}

void addHeader(PDFPages& pages, const HistoryTranscriptPDFDocument& document) {
    pages.addText(qt(document.title), PDFFonts::text(titleSize), ink, left, right);
    if (!document.note.empty()) {
        pages.addGap(gapAfterTitle);
        pages.addText(qt(document.note), PDFFonts::text(noteSize), softInk, left, right);
    }
    pages.addGap(gapAfterHeader);
}

void addRow(PDFPages& pages, const HistoryTranscriptPDFDocument::Row& row, bool isTimed) {
    const double textLeft = left + barWidth + gapAfterBar + (isTimed ? timeColumn : 0);
    const QFont sourceFont = PDFFonts::text(sourceSize);
    const double lineHeight = pages.heightOf(sourceFont);
    pages.ensureRoom(lineHeight);
    pages.beginBar(left, barWidth, barColor);
    if (row.time)
        pages.addLabel(qt(*row.time), PDFFonts::digits(timeSize), faintInk,
                       left + barWidth + gapAfterBar, lineHeight);
    if (!row.source.empty())
        pages.addText(qt(row.source), sourceFont, ink, textLeft, right);
    if (!row.translation.empty()) {
        if (!row.source.empty())
            pages.addGap(gapAfterSource);
        pages.addText(qt(row.translation), PDFFonts::text(translationSize), softInk, textLeft,
                      right);
    }
    pages.endBar();
    pages.addGap(gapAfterRow);
}

/// Enough text of the document to detect its language.
QString sample(const HistoryTranscriptPDFDocument& document) {
    constexpr std::size_t maximumRows = 200;
    QString text = qt(document.note);
    for (std::size_t i = 0; i < std::min(document.rows.size(), maximumRows); ++i)
        text += qt(document.rows[i].source) + qt(document.rows[i].translation);
    return text;
}

} // namespace

QByteArray pdf(const HistoryTranscriptPDFDocument& document) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    PDFFonts::chooseRegion(sample(document));
    SelectableText text;
    {
        QPdfWriter writer(&buffer);
        writer.setTitle(qt(document.title));
        writer.setCreator(QStringLiteral("Tessarune"));
        writer.setPageSize(
            QPageSize(QSizeF(PDFPages::pageWidth, PDFPages::pageHeight), QPageSize::Point));
        writer.setPageMargins(QMarginsF());
        writer.setResolution(pointsPerInch);
        PDFPages pages(writer, text);
        addHeader(pages, document);
        const bool isTimed = std::ranges::any_of(
            document.rows, [](const auto& row) { return row.time.has_value(); });
        for (const auto& row : document.rows)
            addRow(pages, row, isTimed);
    }
    buffer.close();
    return text.madeSelectable(bytes);
}

} // namespace tessarune::HistoryTranscriptPDFWriter
