// Reads a transcript as JSON from standard input and writes it as a PDF to standard output.
#include "Tessarune/platform/pdf/HistoryTranscriptPDFWriter.h"

#include <sysexits.h>

#include <QGuiApplication>
#include <iostream>
#include <iterator>

int main(int argc, char** argv) {
    using namespace tessarune;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const std::string input(std::istreambuf_iterator<char>(std::cin), {});
    const auto document = HistoryTranscriptPDFDocument::decoded(input);
    if (!document) {
        std::cerr << "tessarune-pdf: standard input is not a transcript\n";
        return EX_DATAERR;
    }
    const QByteArray pdf = HistoryTranscriptPDFWriter::pdf(*document);
    std::cout.write(pdf.constData(), pdf.size()).flush();
    return std::cout ? EX_OK : EX_IOERR;
}
