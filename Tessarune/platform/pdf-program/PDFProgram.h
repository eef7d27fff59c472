#pragma once

#include "Tessarune/history/HistoryTranscriptPDFDocument.h"

#include <string>

/// The program "tessarune-pdf", which is installed in the folder of the programs that run it.
namespace tessarune::PDFProgram {

/// Lays out a document in another process and waits for it. Returns the PDF file. Any thread.
/// Throws std::runtime_error with a text for the user if the program is missing or fails.
std::string pdf(const HistoryTranscriptPDFDocument& document);

} // namespace tessarune::PDFProgram
