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

/// Derives from a list of caption rows which translations are visible, what the status line says
/// and whether a retry makes sense. Pure functions, safe from any thread.
namespace tessarune::TranslationPresentationBuilder {

/// Why a retry cannot run: a short text beside the captions, and a sentence for the status line.
struct RetryBlockedStatus {
    std::string translationStatusMessage;
    std::string statusMessage;

    bool operator==(const RetryBlockedStatus&) const = default;
};

bool hasFailures(std::span<const CaptionSegment> segments);
/// Whether a row has no translation, failed ones included.
bool hasIncomplete(std::span<const CaptionSegment> segments);
std::size_t pendingCount(std::span<const CaptionSegment> segments);
/// Rows that carry the text of a unit; its other members are not counted.
std::size_t translatedCount(std::span<const CaptionSegment> segments);

std::vector<std::string> visibleTranslations(std::span<const CaptionSegment> segments,
                                             const std::unordered_set<UUID>& clearedSegmentIDs);
std::string visibleGhostText(std::string_view text, bool softTranslationEnabled);
std::string flow(const std::vector<std::string>& translations);

bool canRetryFailures(std::span<const CaptionSegment> segments, bool backendCanRun);
bool canRetryIncomplete(std::span<const CaptionSegment> segments, bool backendCanRun);
/// True for every target, even the source language, whose text is passed through.
bool backendCanRun(std::string_view backend, std::string_view target);
std::optional<RetryBlockedStatus> retryBlockedStatus(bool hasIncomplete, std::string_view backend);

/// What the status line needs in addition to the rows.
struct StatusInput {
    std::string_view backend;
    std::string_view target;
    std::string_view statusMessage; ///< what the session has to say; stands before all progress
    bool isGhostTranslating = false;
    bool isTranslating = false;
    bool includeProgress = true;
};
std::string statusText(std::span<const CaptionSegment> committedSegments, const StatusInput& input);
bool shouldSurfaceStatusAlongsideOutput(std::span<const CaptionSegment> segments);

} // namespace tessarune::TranslationPresentationBuilder
