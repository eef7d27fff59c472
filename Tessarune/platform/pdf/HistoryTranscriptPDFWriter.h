#pragma once

#include "Tessarune/history/HistoryTranscriptPDFDocument.h"

#include <QByteArray>

/// Lays transcripts out on US Letter pages. A QGuiApplication is there; its thread.
namespace tessarune::HistoryTranscriptPDFWriter {

/// The whole file. Time and memory grow with the transcript; no input fails.
QByteArray pdf(const HistoryTranscriptPDFDocument& document);

} // namespace tessarune::HistoryTranscriptPDFWriter
