#include "Tessarune/history/HistoryTranscriptPayload.h"

#include "TessaruneCore/text/Text.h"

#include <utility>

namespace tessarune {

namespace {

/// The pieces between all occurrences of `separator`, empty ones too.
std::vector<std::string_view> split(std::string_view text, std::string_view separator) {
    std::vector<std::string_view> pieces;
    for (;;) {
        const std::size_t end = text.find(separator);
        pieces.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return pieces;
        text.remove_prefix(end + separator.size());
    }
}

} // namespace

HistoryTranscriptPayload HistoryTranscriptPayload::trimmed(std::string_view sourceText,
                                                           std::string_view bilingualText) {
    return {std::string(Text::trimmed(sourceText)), std::string(Text::trimmed(bilingualText))};
}

std::vector<BilingualTranscriptBlock>
HistoryTranscriptPayload::bilingualBlocks(std::string_view text) {
    std::vector<BilingualTranscriptBlock> blocks;
    std::int64_t id = 0;
    for (const auto piece : split(Text::trimmed(text), "\n\n")) {
        std::vector<std::string> lines = paragraphs(piece);
        if (!lines.empty()) {
            std::string source = std::move(lines.front());
            lines.erase(lines.begin());
            blocks.push_back({id, std::move(source), Text::joined(lines, "\n")});
        }
        ++id;
    }
    return blocks;
}

std::vector<std::string> HistoryTranscriptPayload::paragraphs(std::string_view text) {
    std::vector<std::string> paragraphs;
    for (const auto line : split(text, "\n")) {
        if (const auto trimmed = Text::trimmed(line); !trimmed.empty())
            paragraphs.emplace_back(trimmed);
    }
    return paragraphs;
}

HistoryTranscriptPresentation HistoryTranscriptPayload::presentation(int requestedMode) const {
    using Presentation = HistoryTranscriptPresentation;
    if (sourceText.empty())
        return Presentation::nothing;
    if (requestedMode != bilingualMode)
        return Presentation::source;
    return bilingualText.empty() ? Presentation::sourceWithoutTranslation : Presentation::bilingual;
}

} // namespace tessarune
