#pragma once

#include "Tessarune/history/HistoryTranscriptPDFDocument.h"

#include <string>

/// Runs the program "tessarune-pdf", which must be in the same folder as the running program.
namespace tessarune::PDFProgram {

/// Lays out a document in another process and waits for it. Returns the bytes of the PDF. Any
/// thread. Throws std::runtime_error with a text for the user if the program is missing or fails.
std::string pdf(const HistoryTranscriptPDFDocument& document);

} // namespace tessarune::PDFProgram
