#pragma once

#include "TessaruneCore/UUID.h"
#include "TessaruneCore/captions/CaptionSegment.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

/// Derives the visible translations, the status line and the possible retries from a list of
/// caption rows. Pure functions, safe from any thread.
namespace tessarune::TranslationPresentationBuilder {

/// Why a retry cannot run: a short text beside the captions, and a sentence for the status line.
struct RetryBlockedStatus {
    std::string translationStatusMessage;
    std::string statusMessage;

    bool operator==(const RetryBlockedStatus&) const = default;
};

bool hasFailures(std::span<const CaptionSegment> segments);
/// Whether any row has no translation, because it is pending or has failed.
bool hasIncomplete(std::span<const CaptionSegment> segments);
std::size_t pendingCount(std::span<const CaptionSegment> segments);
/// The number of rows that carry the text of a unit; the unit's other rows are not counted.
std::size_t translatedCount(std::span<const CaptionSegment> segments);

std::vector<std::string> visibleTranslations(std::span<const CaptionSegment> segments,
                                             const std::unordered_set<UUID>& clearedSegmentIDs);
std::string visibleGhostText(std::string_view text, bool softTranslationEnabled);
/// The translations as one running text.
std::string flow(const std::vector<std::string>& translations);

bool canRetryFailures(std::span<const CaptionSegment> segments, bool backendCanRun);
bool canRetryIncomplete(std::span<const CaptionSegment> segments, bool backendCanRun);
/// Whether the backend can translate. The target makes no difference: if it is the source language,
/// the text is passed through.
bool backendCanRun(std::string_view backend, std::string_view target);
/// Call it only if the backend cannot run. Returns `nullopt` if there is nothing to retry.
std::optional<RetryBlockedStatus> retryBlockedStatus(bool hasIncomplete, std::string_view backend);

/// What the status line needs in addition to the rows.
struct StatusInput {
    std::string_view backend;
    std::string_view target;
    std::string_view statusMessage; ///< the session's message; replaces the progress
    bool isGhostTranslating = false;
    bool isTranslating = false;
    bool includeProgress = true;
};
std::string statusText(std::span<const CaptionSegment> committedSegments, const StatusInput& input);
bool shouldSurfaceStatusAlongsideOutput(std::span<const CaptionSegment> segments);

} // namespace tessarune::TranslationPresentationBuilder
