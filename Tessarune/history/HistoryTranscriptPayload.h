#pragma once

#include "Tessarune/history/BilingualTranscriptBlock.h"

#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// The state of the transcript area.
enum class HistoryTranscriptPresentation {
    nothing = 0,
    sourceWithoutTranslation = 1, ///< the bilingual text was requested and there is none
    source = 2,
    bilingual = 3
};

/// A recording's two texts for display. A plain value; its functions are pure.
struct HistoryTranscriptPayload {
    static constexpr int bilingualMode = 1;

    std::string sourceText;
    std::string bilingualText;

    bool operator==(const HistoryTranscriptPayload&) const = default;

    /// From the files' contents, without the white space around them.
    static HistoryTranscriptPayload trimmed(std::string_view sourceText,
                                            std::string_view bilingualText);

    /// The blocks between empty lines: the first line of each is the source, the others are the
    /// translation.
    static std::vector<BilingualTranscriptBlock> bilingualBlocks(std::string_view text);

    /// The lines of a source text, trimmed, without the empty ones.
    static std::vector<std::string> paragraphs(std::string_view text);

    HistoryTranscriptPresentation presentation(int requestedMode) const;
};

} // namespace tessarune
