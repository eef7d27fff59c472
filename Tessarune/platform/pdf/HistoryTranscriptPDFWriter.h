#pragma once

#include "Tessarune/history/HistoryTranscriptPDFDocument.h"

#include <QByteArray>

/// Lays out transcripts on US Letter pages. Needs a QGuiApplication; only on its thread.
namespace tessarune::HistoryTranscriptPDFWriter {

/// Returns the PDF file. Time and memory grow with the transcript; accepts any document.
QByteArray pdf(const HistoryTranscriptPDFDocument& document);

} // namespace tessarune::HistoryTranscriptPDFWriter
