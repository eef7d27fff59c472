#pragma once

#include "Tessarune/history/HistoryTranscriptExportDocument.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace tessarune {

/// One or more rows of a transcript that share a translation, and the times of their words.
struct SpokenRow {
    std::string source;
    std::string translation;
    double start = 0; ///< seconds from the start of the recording
    double end = 0;
    /// For each word, its byte offset in `source` and the time at which it begins, in order.
    std::vector<std::pair<std::size_t, double>> words;

    /// When the text at the byte offset `at` of the source is heard.
    double timeAt(std::size_t at) const;

    /// The rows of a document, in the order of time. With `joinsTranslated`, rows that share a
    /// translation become one.
    static std::vector<SpokenRow> of(const HistoryTranscriptExportDocument& document,
                                     const std::vector<HistoryWordTimeline::Word>& words,
                                     double duration, bool joinsTranslated);
};

} // namespace tessarune
