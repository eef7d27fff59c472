#include "Tessarune/session/LiveHistoryText.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>

namespace tessarune {

namespace {

/// More bytes than the text usually gains between two builds.
constexpr std::size_t usualGrowth = 1024;

/// Appends a line and returns the number of characters added. A line end is always a separate
/// character, so the counts of single lines can be added up.
std::size_t appendLine(std::string& text, const std::string& line) {
    if (line.empty())
        return 0;
    const bool isFirst = text.empty();
    if (!isFirst)
        text += '\n';
    text += line;
    return Text::length(line) + (isFirst ? 0 : 1);
}

} // namespace

LiveHistoryText::Built LiveHistoryText::build(std::string_view previous,
                                              const SessionTranscriptBuilder::Sources& sources) {
    const auto rows = sources.committedSegments;
    if (!continuesText(previous, rows))
        *this = LiveHistoryText();
    Built built{{}, settledCharacters_};
    // Growth by doubling would leave up to half of the memory unused.
    built.text.reserve(previous.size() + usualGrowth);
    built.text = previous.substr(0, settledBytes_);
    // The builder needs the last committed row to detect that the open row repeats it.
    const auto last = rows.last(std::min<std::size_t>(rows.size(), 1));
    const auto settled = rows.first(rows.size() - last.size());
    if (settled.size() > settledRows_) {
        built.characters += appendLine(
            built.text, SessionTranscriptBuilder::sourceText(settled.subspan(settledRows_)));
        settledBytes_ = built.text.size();
        settledCharacters_ = built.characters;
        settledRows_ = settled.size();
        lastSettledRow_ = settled.back().id;
    }
    built.characters +=
        appendLine(built.text, SessionTranscriptBuilder::sourceText(
                                   {last, sources.liveLeadingSentences, sources.softCaptionSegments,
                                    sources.currentPartial}));
    return built;
}

bool LiveHistoryText::continuesText(std::string_view previous,
                                    std::span<const CaptionSegment> rows) const {
    return settledRows_ == 0 ||
           (rows.size() > settledRows_ && rows[settledRows_ - 1].id == *lastSettledRow_ &&
            previous.size() >= settledBytes_);
}

} // namespace tessarune
