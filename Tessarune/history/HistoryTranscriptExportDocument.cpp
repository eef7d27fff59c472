#include "Tessarune/history/HistoryTranscriptExportDocument.h"

#include "Tessarune/history/HistoryTranscriptPayload.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <cstdio>

namespace tessarune {

namespace {

std::string clockTime(double seconds) {
    const int whole = static_cast<int>(HistoryWordTimeline::saneTime(seconds));
    char text[32];
    if (whole < 3600)
        std::snprintf(text, sizeof text, "%02d:%02d", whole / 60, whole % 60);
    else
        std::snprintf(text, sizeof text, "%d:%02d:%02d", whole / 3600, whole / 60 % 60, whole % 60);
    return text;
}

} // namespace

std::vector<HistoryTranscriptExportDocument::TranscriptRow>
HistoryTranscriptExportDocument::transcriptRows() const {
    std::vector<TranscriptRow> rows;
    if (content == Content::source) {
        for (auto& paragraph : HistoryTranscriptPayload::paragraphs(text))
            rows.push_back({std::move(paragraph), {}, {}});
        for (std::size_t i = 0; i < std::min(rows.size(), sentenceTimings.size()); ++i)
            rows[i].sentence = i;
        return rows;
    }
    std::vector<std::string> sources;
    for (auto& block : HistoryTranscriptPayload::bilingualBlocks(text)) {
        sources.push_back(block.source);
        rows.push_back({std::move(block.source), std::move(block.translation), {}});
    }
    const auto sentences = HistoryWordTimeline::sentencesOfRows(sources, sentenceTimings);
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i].sentence = sentences[i];
    return rows;
}

std::optional<std::string> HistoryTranscriptExportDocument::timeOf(const TranscriptRow& row) const {
    return row.sentence ? std::optional(clockTime(sentenceTimings[*row.sentence].start))
                        : std::nullopt;
}

HistoryTranscriptPDFDocument HistoryTranscriptExportDocument::pdfDocument() const {
    HistoryTranscriptPDFDocument document{title, note, {}};
    for (auto& row : transcriptRows())
        document.rows.push_back({timeOf(row), std::move(row.source), std::move(row.translation)});
    return document;
}

std::string HistoryTranscriptExportDocument::plainText() const {
    if (content != Content::translation)
        return std::string(Text::trimmed(text)) + "\n";
    std::string lines;
    for (const auto& row : transcriptRows()) {
        if (!row.translation.empty())
            lines += row.translation + "\n";
    }
    return lines;
}

} // namespace tessarune
