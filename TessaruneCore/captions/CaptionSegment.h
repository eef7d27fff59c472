#pragma once

#include "TessaruneCore/UUID.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tessarune {

enum class CaptionSegmentState { partial, final };

/// What settled the text of a row.
enum class FreezeKind {
    none,  ///< nothing: the row may still change, or was sealed at the end of the session
    soft,  ///< a soft caption: not committed, may be withdrawn
    ours,  ///< frozen: it stayed unchanged for a while, before its final arrived
    engine ///< a final result of the recogniser
};

std::string_view name(CaptionSegmentState state);
std::string_view name(FreezeKind kind);
/// The suffix that marks a row in plain listings; empty for `none`.
std::string_view markerSuffix(FreezeKind kind);

/// One row of caption text, the value type that the whole program shares. Equality compares texts
/// by canonical equivalence.
struct CaptionSegment {
    UUID id; ///< identity for display, translation and history; never changes
    std::string sourceText;
    std::optional<std::string> translatedText;
    std::optional<std::string> translationError;
    std::optional<UUID> translationUnitID;          ///< the committed unit that this row belongs to
    std::optional<UUID> translationResultSegmentID; ///< the row that carries the unit's translation
    std::optional<std::int64_t> translationUnitIndex; ///< the row's index in the unit, from 0
    std::optional<std::int64_t> translationUnitCount; ///< the number of the unit's rows
    /// The core's revision when the row was last written. A leading sentence has 0, even after it
    /// is sealed.
    std::int64_t revision = 0;
    CaptionSegmentState state = CaptionSegmentState::partial;
    FreezeKind freezeKind = FreezeKind::none;
    /// Start and end in seconds since 1970. All rows of a final have the final's times. A frozen
    /// row starts when it was frozen and has no end; a sealed row ends with the session.
    double startedAt = 0;
    std::optional<double> endedAt;
    std::optional<double> committedAt; ///< seconds since 1970; absent in sealed rows
    std::optional<double> firstSeenAt; ///< when the row's first word was first seen
    std::int64_t revisionCount = 0;    ///< how often the text changed before the commit

    bool operator==(const CaptionSegment& other) const;
};

} // namespace tessarune
