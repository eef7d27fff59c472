#include "Tessarune/history/HistorySubtitles.h"

#include "Tessarune/history/SpokenRow.h"
#include "Tessarune/history/SubtitleText.h"
#include "TessaruneCore/text/TextColumns.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string_view>

namespace tessarune::HistorySubtitles {

namespace {

using Content = HistoryTranscriptExportContent;

constexpr double shortestCue = static_cast<double>(shortestCueMS) / 1000;
constexpr double longestCue = static_cast<double>(longestCueMS) / 1000;
/// Reading speed: how fast a cue's text can be read while it is shown.
constexpr double columnsPerSecond = 20;

/// A stretch of the spoken text that fits on the screen at once.
struct Chunk {
    SubtitleText::Range pieces;
    double start = 0;
    double end = 0;
};

/// A cue that may still be too short or too long, or overlap the next cue.
struct Draft {
    std::vector<std::string> source;
    std::vector<std::string> translation;
    double start = 0;
    double end = 0;
};

/// Cuts the row into chunks, each as long as the screen, the maximum cue length and `columnLimit`
/// allow.
std::vector<Chunk> cut(const SpokenRow& row, const SubtitleText& text, std::size_t columnLimit) {
    std::vector<Chunk> chunks;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const double until = row.timeAt(text.offset(i + 1));
        const auto joins = [&] {
            const SubtitleText::Range longer{chunks.back().pieces.first, i + 1};
            return until - chunks.back().start <= longestCue &&
                   text.columns(longer) <= columnLimit && text.fits(longer);
        };
        if (chunks.empty() || !joins())
            chunks.push_back({{i, i}, row.timeAt(text.offset(i)), until});
        chunks.back().pieces.second = i + 1;
        chunks.back().end = until;
    }
    return chunks;
}

/// As few chunks as possible, of about equal length.
std::vector<Chunk> chunksOf(const SpokenRow& row, const SubtitleText& text) {
    std::size_t wide = SubtitleText::mostColumns * SubtitleText::mostLines;
    std::vector<Chunk> best = cut(row, text, wide);
    for (std::size_t tooNarrow = 0; best.size() > 1 && wide - tooNarrow > 1;) {
        const std::size_t columns = (wide + tooNarrow) / 2;
        auto narrower = cut(row, text, columns);
        if (narrower.size() > best.size()) {
            tooNarrow = columns;
        } else {
            wide = columns;
            best = std::move(narrower);
        }
    }
    return best;
}

/// Adds the cues of a row, with its source, its translation or both. If both are shown, the
/// translation is cut into one part per chunk of the source, or into more parts if it is long.
void addDrafts(std::vector<Draft>& drafts, SpokenRow row, Content content) {
    if (content == Content::translation) {
        // The translation has no word times, so it is spread evenly.
        row.source = std::move(row.translation);
        row.translation.clear();
        row.words.clear();
    }
    std::ranges::replace(row.source, '\n', ' ');
    std::ranges::replace(row.translation, '\n', ' ');
    if (row.source.empty())
        return;
    const SubtitleText source(row.source);
    const std::vector<Chunk> chunks = chunksOf(row, source);
    if (row.translation.empty() || content != Content::bilingual) {
        for (const Chunk& chunk : chunks)
            drafts.push_back({source.wrapped(chunk.pieces), {}, chunk.start, chunk.end});
        return;
    }
    const SubtitleText translation(row.translation);
    const std::size_t count = translation.countOfFittingParts(chunks.size());
    const auto parts = translation.parts(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t index = i * chunks.size() / count;
        const Chunk& chunk = chunks[index];
        // A chunk with a long translation stays on the screen while the parts are shown in turn.
        const std::size_t first = (index * count + chunks.size() - 1) / chunks.size();
        const std::size_t end = ((index + 1) * count + chunks.size() - 1) / chunks.size();
        const double each = (chunk.end - chunk.start) / static_cast<double>(end - first);
        const double start = chunk.start + each * static_cast<double>(i - first);
        drafts.push_back(
            {source.wrapped(chunk.pieces), translation.wrapped(parts[i]), start, start + each});
    }
}

/// If a cue is too short to be read, joins the next one to it, provided that both fit.
std::vector<Draft> withoutFlashes(std::vector<Draft> drafts) {
    std::vector<Draft> kept;
    for (Draft& draft : drafts) {
        if (!kept.empty()) {
            Draft& last = kept.back();
            const bool isFlash =
                draft.start - last.start < shortestCue && draft.end - last.start <= longestCue &&
                last.source.size() + draft.source.size() <= SubtitleText::mostLines &&
                last.translation.size() + draft.translation.size() <= SubtitleText::mostLines;
            if (isFlash) {
                last.source.insert(last.source.end(), draft.source.begin(), draft.source.end());
                last.translation.insert(last.translation.end(), draft.translation.begin(),
                                        draft.translation.end());
                last.end = std::max(last.end, draft.end);
                continue;
            }
        }
        kept.push_back(std::move(draft));
    }
    return kept;
}

std::int64_t milliseconds(double seconds) {
    return std::llround(seconds * 1000);
}

double readingTime(const Draft& draft) {
    double columns = 0;
    for (const auto* lines : {&draft.source, &draft.translation}) {
        for (const auto& line : *lines)
            columns += static_cast<double>(Text::columns(line));
    }
    return columns / columnsPerSecond;
}

std::vector<SubtitleCue> timed(std::vector<Draft> drafts) {
    std::vector<SubtitleCue> cues;
    std::int64_t free = 0;
    for (std::size_t i = 0; i < drafts.size(); ++i) {
        Draft& draft = drafts[i];
        SubtitleCue cue;
        cue.startMS = std::max(milliseconds(draft.start), free);
        const std::int64_t next =
            i + 1 < drafts.size() ? milliseconds(drafts[i + 1].start) : cue.startMS + longestCueMS;
        const std::int64_t read = cue.startMS + milliseconds(readingTime(draft));
        cue.endMS = std::min(std::max(milliseconds(draft.end), read), std::max(next, free));
        cue.endMS = std::clamp(cue.endMS, cue.startMS + shortestCueMS, cue.startMS + longestCueMS);
        free = cue.endMS;
        cue.lines = std::move(draft.source);
        for (auto& line : draft.translation)
            cue.lines.push_back(std::move(line));
        cues.push_back(std::move(cue));
    }
    return cues;
}

/// "01:02:03,456"
std::string timeText(std::int64_t ms, char point) {
    char text[32];
    std::snprintf(text, sizeof text, "%02lld:%02d:%02d%c%03d",
                  static_cast<long long>(ms / 3'600'000), static_cast<int>(ms / 60'000 % 60),
                  static_cast<int>(ms / 1000 % 60), point, static_cast<int>(ms % 1000));
    return text;
}

std::string timesText(const SubtitleCue& cue, char point) {
    return timeText(cue.startMS, point) + " --> " + timeText(cue.endMS, point) + "\n";
}

std::string escapedForVTT(std::string_view line) {
    std::string text;
    for (const char character : line) {
        if (character == '&')
            text += "&amp;";
        else if (character == '<')
            text += "&lt;";
        else if (character == '>')
            text += "&gt;";
        else
            text += character;
    }
    return text;
}

} // namespace

std::vector<SubtitleCue> cues(const HistoryTranscriptExportDocument& document,
                              const std::vector<HistoryWordTimeline::Word>& words,
                              double duration) {
    std::vector<Draft> drafts;
    const bool joins = document.content != Content::source;
    for (auto& row : SpokenRow::of(document, words, duration, joins))
        addDrafts(drafts, std::move(row), document.content);
    return timed(withoutFlashes(std::move(drafts)));
}

std::string srt(const std::vector<SubtitleCue>& cues) {
    std::string file;
    for (std::size_t i = 0; i < cues.size(); ++i) {
        file += std::to_string(i + 1) + "\n" + timesText(cues[i], ',');
        for (const auto& line : cues[i].lines)
            file += line + "\n";
        file += "\n";
    }
    return file;
}

std::string webVTT(const std::vector<SubtitleCue>& cues) {
    std::string file = "WEBVTT\n\n";
    for (const auto& cue : cues) {
        file += timesText(cue, '.');
        for (const auto& line : cue.lines)
            file += escapedForVTT(line) + "\n";
        file += "\n";
    }
    return file;
}

} // namespace tessarune::HistorySubtitles
