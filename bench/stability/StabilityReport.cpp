#include "bench/stability/StabilityReport.h"

#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"
#include "bench/support/Statistics.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace tessarune {

namespace {

using Cells = std::vector<std::string>;

/// The two lines above each column; the names of rows stand below empty ones.
struct Column {
    std::string_view group;
    std::string_view name;
};
constexpr Column reportColumns[] = {
    {"", ""},
    {"updates", "per word"},
    {"erased", "printed"},
    {"per word", "spoken"},
    {"unstable", "words"},
    {"steady", "median"},
    {"after", "90 %"},
    {"settled", "median"},
    {"after", "90 %"},
    {"unlike", "finals"},
};

constexpr std::size_t gap = 2;

std::string percent(double share) {
    return Text::fixed(share * 100, 1) + " %";
}

std::string seconds(const std::vector<double>& times, double share) {
    return times.empty() ? "–" : Text::fixed(Statistics::percentile(times, share), 2) + " s";
}

std::string ratio(std::size_t count, std::size_t words) {
    return words == 0 ? "–"
                      : Text::fixed(static_cast<double>(count) / static_cast<double>(words), 2);
}

Cells cells(const StabilityRow& row) {
    const Stability& printed = row.text.printed;
    const Stability& spoken = row.text.spoken;
    return {
        row.name,
        ratio(printed.updates, printed.words),
        ratio(printed.erased, printed.words),
        ratio(spoken.erased, spoken.words),
        spoken.words == 0 ? "–" : percent(spoken.unstableShare()),
        seconds(spoken.untilSteady, 0.5),
        seconds(spoken.untilSteady, 0.9),
        seconds(spoken.untilSettled, 0.5),
        seconds(spoken.untilSettled, 0.9),
        row.isRecogniser || row.text.finalWords == 0 ? "–" : percent(row.text.unlikeShare()),
    };
}

std::string aligned(const std::vector<Cells>& lines) {
    std::string text;
    std::vector<std::size_t> widths(std::size(reportColumns), 0);
    for (const Cells& line : lines) {
        for (std::size_t i = 0; i < line.size(); ++i)
            widths[i] = std::max(widths[i], Text::columns(line[i]));
    }
    for (const Cells& line : lines) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            const std::string padding(widths[i] - Text::columns(line[i]), ' ');
            text += i == 0 ? line[i] + padding : std::string(gap, ' ') + padding + line[i];
        }
        text.erase(text.find_last_not_of(' ') + 1);
        text += "\n";
    }
    return text;
}

} // namespace

std::string StabilityReport::table() const {
    std::vector<Cells> lines(2);
    for (const Column& column : reportColumns) {
        lines[0].emplace_back(column.group);
        lines[1].emplace_back(column.name);
    }
    std::size_t open = 0;
    for (const StabilityRow& row : rows) {
        lines.push_back(cells(row));
        open = std::max(open, row.text.spoken.words - row.text.spoken.untilSettled.size());
    }
    std::string text = title + "\n\n" + aligned(lines);
    if (open > 0)
        text += "\nUp to " + std::to_string(open) + " words were still open at the end.\n";
    return text;
}

} // namespace tessarune
