#include "Tessarune/history/HistoryTranscriptExportDocument.h"

#include "Tessarune/history/HistoryTranscriptPayload.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tessarune {

namespace {

constexpr double longestTime = 1e6; // seconds; what is beyond is damage

std::string clockTime(double seconds) {
    const double known = std::isfinite(seconds) ? std::clamp(seconds, 0.0, longestTime) : 0;
    const int whole = static_cast<int>(known);
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
            rows.push_back({std::move(paragraph), {}});
    } else {
        for (auto& block : HistoryTranscriptPayload::bilingualBlocks(text))
            rows.push_back({std::move(block.source), std::move(block.translation)});
    }
    return rows;
}

std::optional<std::string> HistoryTranscriptExportDocument::timeOfRow(std::size_t index) const {
    if (index >= sentenceTimings.size())
        return std::nullopt;
    return clockTime(sentenceTimings[index].start);
}

HistoryTranscriptPDFDocument HistoryTranscriptExportDocument::pdfDocument() const {
    HistoryTranscriptPDFDocument document{title, note, {}};
    for (auto& row : transcriptRows())
        document.rows.push_back(
            {timeOfRow(document.rows.size()), std::move(row.source), std::move(row.translation)});
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
