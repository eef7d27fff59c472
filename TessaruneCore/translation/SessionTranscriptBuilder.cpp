#include "TessaruneCore/translation/SessionTranscriptBuilder.h"

#include "TessaruneCore/text/Text.h"

namespace tessarune::SessionTranscriptBuilder {

namespace {

constexpr std::string_view betweenLines = "\n";
constexpr std::string_view betweenBlocks = "\n\n";

void appendIfAny(std::vector<std::string>& parts, std::string_view text) {
    const auto trimmed = Text::trimmed(text);
    if (!trimmed.empty())
        parts.emplace_back(trimmed);
}

void appendSources(std::vector<std::string>& parts, std::span<const CaptionSegment> segments) {
    for (const auto& segment : segments)
        appendIfAny(parts, segment.sourceText);
}

void appendBlocks(std::vector<std::string>& blocks, std::span<const CaptionSegment> segments) {
    for (const auto& segment : segments) {
        std::vector<std::string> lines;
        appendIfAny(lines, segment.sourceText);
        appendIfAny(lines, segment.translatedText.value_or(""));
        if (!lines.empty())
            blocks.push_back(Text::joined(lines, betweenLines));
    }
}

/// The last row in front of the partial, or null.
const CaptionSegment* lastRow(const Sources& sources) {
    for (const auto rows :
         {sources.softCaptionSegments, sources.liveLeadingSentences, sources.committedSegments}) {
        if (!rows.empty())
            return &rows.back();
    }
    return nullptr;
}

void appendPartial(std::vector<std::string>& parts, const Sources& sources) {
    const auto* last = lastRow(sources);
    if (!last || last->id != sources.currentPartial.id)
        appendIfAny(parts, sources.currentPartial.sourceText);
}

} // namespace

std::vector<CaptionSegment>
visibleSourceSegments(const Sources& sources, const std::unordered_set<UUID>& clearedSegmentIDs) {
    std::vector<CaptionSegment> visible;
    for (const auto rows :
         {sources.committedSegments, sources.liveLeadingSentences, sources.softCaptionSegments}) {
        for (const auto& segment : rows) {
            if (!clearedSegmentIDs.contains(segment.id))
                visible.push_back(segment);
        }
    }
    const auto& partial = sources.currentPartial;
    const bool isRepeated = !visible.empty() && visible.back().id == partial.id;
    if (!isRepeated && !clearedSegmentIDs.contains(partial.id) &&
        !Text::trimmed(partial.sourceText).empty())
        visible.push_back(partial);
    return visible;
}

std::string sourceText(std::span<const CaptionSegment> segments) {
    std::vector<std::string> lines;
    appendSources(lines, segments);
    return Text::joined(lines, betweenLines);
}

std::string translationText(std::span<const CaptionSegment> segments) {
    std::vector<std::string> lines;
    for (const auto& segment : segments)
        appendIfAny(lines, segment.translatedText.value_or(""));
    return Text::joined(lines, betweenLines);
}

std::string bilingualText(std::span<const CaptionSegment> segments) {
    std::vector<std::string> blocks;
    appendBlocks(blocks, segments);
    return Text::joined(blocks, betweenBlocks);
}

std::string sourceText(const Sources& sources) {
    std::vector<std::string> lines;
    appendSources(lines, sources.committedSegments);
    appendSources(lines, sources.liveLeadingSentences);
    appendSources(lines, sources.softCaptionSegments);
    appendPartial(lines, sources);
    return Text::joined(lines, betweenLines);
}

std::string bilingualText(const Sources& sources) {
    std::vector<std::string> blocks;
    appendBlocks(blocks, sources.committedSegments);
    appendSources(blocks, sources.liveLeadingSentences);
    appendSources(blocks, sources.softCaptionSegments);
    appendPartial(blocks, sources);
    return Text::joined(blocks, betweenBlocks);
}

} // namespace tessarune::SessionTranscriptBuilder
