#pragma once

#include "Tessarune/history/HistoryTranscriptPDFDocument.h"
#include "Tessarune/history/HistoryWordTimeline.h"

#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// Which of a recording's texts an export holds.
enum class HistoryTranscriptExportContent {
    source,
    bilingual,
    translation ///< of the bilingual text; for subtitles and plain text
};

/// A transcript as it leaves the program, whatever the format. A plain value; its functions are
/// pure.
struct HistoryTranscriptExportDocument {
    using Content = HistoryTranscriptExportContent;

    /// One row of the transcript; one of the two may be empty.
    struct TranscriptRow {
        std::string source;
        std::string translation;
        std::optional<std::size_t> sentence; ///< of the timings; without one it has no time

        bool operator==(const TranscriptRow&) const = default;
    };

    std::string title;
    std::string note;
    Content content = Content::source;
    /// The recording's source text, or for the other contents its bilingual text.
    std::string text;
    /// In the order of time. Row 0, row 1 and so on of a source text; may be shorter than the rows.
    std::vector<HistoryWordTimeline::Sentence> sentenceTimings;

    std::vector<TranscriptRow> transcriptRows() const;
    /// When a row begins, "04:05"; nothing where that is not known.
    std::optional<std::string> timeOf(const TranscriptRow& row) const;

    /// A page that needs no other file.
    std::string html() const;
    HistoryTranscriptPDFDocument pdfDocument() const;
    std::string plainText() const;
};

} // namespace tessarune
