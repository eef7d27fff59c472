#pragma once

#include "Tessarune/history/HistoryTranscriptPDFDocument.h"
#include "Tessarune/history/HistoryWordTimeline.h"

#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// Which of a recording's texts an export contains.
enum class HistoryTranscriptExportContent {
    source,
    bilingual,
    translation ///< the translations of the bilingual text; for subtitles and plain text
};

/// An exported transcript, independent of the format. A plain value; its functions are pure.
struct HistoryTranscriptExportDocument {
    using Content = HistoryTranscriptExportContent;

    /// One row of the transcript; one of its two texts may be empty.
    struct TranscriptRow {
        std::string source;
        std::string translation;
        std::optional<std::size_t> sentence; ///< index into `sentenceTimings`; `nullopt`: no time

        bool operator==(const TranscriptRow&) const = default;
    };

    std::string title;
    std::string note;
    Content content = Content::source;
    /// The recording's source text, or for the other contents its bilingual text.
    std::string text;
    /// In the order of time. If `text` is a source text, the n-th sentence belongs to the n-th row;
    /// the last rows may have no sentence.
    std::vector<HistoryWordTimeline::Sentence> sentenceTimings;

    std::vector<TranscriptRow> transcriptRows() const;
    /// The start time of a row, such as "04:05"; `nullopt` if it is unknown.
    std::optional<std::string> timeOf(const TranscriptRow& row) const;

    /// A self-contained page.
    std::string html() const;
    HistoryTranscriptPDFDocument pdfDocument() const;
    std::string plainText() const;
};

} // namespace tessarune
