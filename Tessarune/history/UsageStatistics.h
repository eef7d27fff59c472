#pragma once

#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/shell/FileSystem.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

enum class UsagePeriodKind { day, week, month };

/// The usage of one day, week (from Monday on) or month in the computer's time zone. A plain value.
struct UsagePeriod {
    double start = 0; ///< its first moment, seconds since 1970
    double end = 0;   ///< the first moment of the next period
    std::string date; ///< its first day, "2025-10-09"
    double listeningSeconds = 0;
    int sessions = 0; ///< sessions that began in it
    std::int64_t words = 0;

    bool operator==(const UsagePeriod&) const = default;
};

/// Usage summed from the saved recordings. Any thread.
namespace UsageStatistics {

/// The data of one recording that the statistics use.
struct Session {
    double startedAt = 0; ///< seconds since 1970
    double seconds = 0;   ///< listened to; 0 for an import
    std::int64_t words = 0;
    bool isReadable = true; ///< false: its words could not be counted
};

/// The recordings of the catalog; reads each transcript to count its words. A recording whose
/// transcript is missing or unreadable has 0 words.
std::vector<Session> sessions(RecordingCatalog& catalog, FileSystem& files);

/// All periods from the first session to the last, including empty ones, in order. The listening
/// time of a session is divided at the borders of periods; the session and its words belong to the
/// period in which the session began. Sessions that began outside the years 2000 to 2099 are left
/// out. A day has 23 or 25 hours when the clock changes.
std::vector<UsagePeriod> periods(const std::vector<Session>& sessions, UsagePeriodKind kind);

/// The message for the user if the words of some recordings were not counted; empty if all were.
std::string problemOf(const std::vector<Session>& sessions);

/// The sum over all periods.
UsagePeriod total(const std::vector<UsagePeriod>& periods);

} // namespace UsageStatistics

} // namespace tessarune
