#include "Terminal/history/UsageCommands.h"

#include "Terminal/CommandOutput.h"
#include "Terminal/ExitStatus.h"
#include "Tessarune/history/DurationTextFormatter.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <string>

namespace tessarune {

namespace {

constexpr std::size_t figureColumns = 10;
constexpr double barColumns = 36;

std::string figure(const std::string& text) {
    return std::string(figureColumns - std::min(figureColumns, Text::columns(text)), ' ') + text;
}

nlohmann::ordered_json usageJSON(const char* type, const UsagePeriod& period) {
    return {{"type", type},
            {"date", period.date},
            {"start", period.start},
            {"end", period.end},
            {"listening", period.listeningSeconds},
            {"sessions", period.sessions},
            {"words", period.words}};
}

std::string usageRow(const std::string& name, const UsagePeriod& period) {
    return Text::padded(name, figureColumns) +
           figure(DurationTextFormatter::compact(period.listeningSeconds)) +
           figure(std::to_string(period.sessions)) + figure(std::to_string(period.words));
}

/// A bar whose length is proportional to `seconds`.
std::string bar(double seconds, double maximumSeconds) {
    const auto length = static_cast<int>(std::lround(barColumns * seconds / maximumSeconds));
    std::string drawn = length > 0 ? "  " : "";
    for (int i = 0; i < length; ++i)
        drawn += "█";
    return drawn;
}

void printChart(const std::vector<UsagePeriod>& periods) {
    double maximum = 1;
    for (const auto& period : periods)
        maximum = std::max(maximum, period.listeningSeconds);
    printText(Text::padded("", figureColumns) + figure(localized("time")) +
              figure(localized("sessions")) + figure(localized("words")));
    for (const auto& period : periods) {
        if (period.sessions > 0 || period.listeningSeconds > 0)
            printText(usageRow(period.date, period) + bar(period.listeningSeconds, maximum));
    }
    printText(usageRow(localized("total"), UsageStatistics::total(periods)));
}

} // namespace

Task<int> showUsage(Program& program, const TerminalOptions& options, UsagePeriodKind by) {
    std::string problem = program.catalog.readingProblem();
    const auto sessions = UsageStatistics::sessions(program.catalog, program.files);
    const auto periods = UsageStatistics::periods(sessions, by);
    if (problem.empty())
        problem = UsageStatistics::problemOf(sessions);
    if (options.json) {
        for (const auto& period : periods)
            printJSON(usageJSON("usage", period));
        printJSON(usageJSON("usageTotal", UsageStatistics::total(periods)));
    } else if (!periods.empty()) {
        printChart(periods);
    } else if (!options.quiet && problem.empty()) {
        printNotice(localized("No sessions have been recorded yet."));
    }
    if (!problem.empty()) {
        printProblem(problem);
        co_return static_cast<int>(ExitStatus::ioError);
    }
    co_return static_cast<int>(ExitStatus::ok);
}

} // namespace tessarune
