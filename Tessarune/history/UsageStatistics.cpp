#include "Tessarune/history/UsageStatistics.h"

#include "Tessarune/history/LocalDay.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <ctime>
#include <system_error>

namespace tessarune {

namespace {

/// Recordings outside these years come from a wrong clock and would make the list of periods very
/// long.
constexpr double earliestUsage = 946684800; // 2000
constexpr double latestUsage = 4102444800;  // 2100

/// The first moment of the period that comes `later` periods after the one that contains `moment`.
double startOfPeriod(double moment, UsagePeriodKind kind, int later) {
    constexpr int daysAWeek = 7;
    const std::tm local = LocalDay::timeOf(moment);
    switch (kind) {
    case UsagePeriodKind::day:
        return LocalDay::start(moment, later);
    case UsagePeriodKind::week: {
        const int sinceMonday = (local.tm_wday + daysAWeek - 1) % daysAWeek;
        return LocalDay::start(local.tm_year, local.tm_mon,
                               local.tm_mday - sinceMonday + later * daysAWeek);
    }
    case UsagePeriodKind::month:
        return LocalDay::start(local.tm_year, local.tm_mon + later, 1);
    }
    return moment;
}

UsagePeriod periodAt(double moment, UsagePeriodKind kind) {
    UsagePeriod period;
    period.start = startOfPeriod(moment, kind, 0);
    period.end = startOfPeriod(moment, kind, 1);
    const std::tm local = LocalDay::timeOf(period.start);
    std::array<char, sizeof "2025-10-09"> date{};
    if (std::strftime(date.data(), date.size(), "%Y-%m-%d", &local) > 0)
        period.date = date.data();
    return period;
}

std::vector<UsagePeriod> emptyPeriods(double first, double last, UsagePeriodKind kind) {
    std::vector<UsagePeriod> periods;
    for (double at = first; periods.empty() || periods.back().end <= last; at = periods.back().end)
        periods.push_back(periodAt(at, kind));
    return periods;
}

} // namespace

std::vector<UsageStatistics::Session> UsageStatistics::sessions(RecordingCatalog& catalog,
                                                                FileSystem& files) {
    std::vector<Session> found;
    for (const auto& recording : catalog.recordings()) {
        const double listened = recording.isImport() ? 0 : recording.duration;
        Session session{recording.startedAt, listened, 0};
        try {
            session.words = static_cast<std::int64_t>(
                Text::countOfWhiteSpaceSeparated(files.read(catalog.transcriptURL(recording.id))));
        } catch (const std::system_error& error) {
            session.isReadable = error.code() == std::errc::no_such_file_or_directory;
        }
        found.push_back(session);
    }
    return found;
}

std::string UsageStatistics::problemOf(const std::vector<Session>& sessions) {
    const auto unreadable = std::ranges::count(sessions, false, &Session::isReadable);
    return unreadable == 0 ? std::string()
                           : localized("Recordings whose texts cannot be read: %lld.",
                                       {std::to_string(unreadable)});
}

std::vector<UsagePeriod> UsageStatistics::periods(const std::vector<Session>& sessions,
                                                  UsagePeriodKind kind) {
    constexpr double longestSession = 7 * 24 * 3600.0;
    std::vector<Session> counted;
    std::ranges::copy_if(sessions, std::back_inserter(counted), [](const Session& session) {
        return session.startedAt >= earliestUsage && session.startedAt < latestUsage;
    });
    if (counted.empty())
        return {};
    double first = latestUsage;
    double last = earliestUsage;
    for (auto& session : counted) {
        session.seconds = std::clamp(session.seconds, 0.0, longestSession);
        first = std::min(first, session.startedAt);
        last = std::max(last, session.startedAt);
        // A session that ends at midnight does not count for the next day.
        if (session.seconds > 0)
            last = std::max(last, std::ceil(session.startedAt + session.seconds) - 1);
    }
    std::vector<UsagePeriod> periods = emptyPeriods(first, last, kind);
    for (const auto& session : counted) {
        auto period = std::ranges::upper_bound(periods, session.startedAt, {}, &UsagePeriod::end);
        period->sessions += 1;
        period->words += session.words;
        const double end = session.startedAt + session.seconds;
        for (double at = session.startedAt; at < end && period != periods.end(); ++period) {
            period->listeningSeconds += std::min(end, period->end) - at;
            at = period->end;
        }
    }
    return periods;
}

UsagePeriod UsageStatistics::total(const std::vector<UsagePeriod>& periods) {
    UsagePeriod sum;
    if (periods.empty())
        return sum;
    sum.start = periods.front().start;
    sum.end = periods.back().end;
    sum.date = periods.front().date;
    for (const auto& period : periods) {
        sum.listeningSeconds += period.listeningSeconds;
        sum.sessions += period.sessions;
        sum.words += period.words;
    }
    return sum;
}

} // namespace tessarune
