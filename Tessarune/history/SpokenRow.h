#pragma once

#include "Tessarune/history/HistoryTranscriptExportDocument.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace tessarune {

/// One or more rows of a transcript that have one translation, and when each of their words is
/// heard.
struct SpokenRow {
    std::string source;
    std::string translation;
    double start = 0; ///< seconds from the start of the recording
    double end = 0;
    /// Bytes of `source` and the time at which the word there begins, in order.
    std::vector<std::pair<std::size_t, double>> words;

    /// When the text that stands `at` bytes into the source is heard.
    double timeAt(std::size_t at) const;

    /// The rows of a document, in the order of time. Without `joinsTranslated` each row stands
    /// alone.
    static std::vector<SpokenRow> of(const HistoryTranscriptExportDocument& document,
                                     const std::vector<HistoryWordTimeline::Word>& words,
                                     double duration, bool joinsTranslated);
};

} // namespace tessarune
