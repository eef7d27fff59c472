#include "TessaruneCore/captions/CaptionSegment.h"

#include "TessaruneCore/text/Text.h"

#include <tuple>

namespace tessarune {

namespace {

bool equal(const std::optional<std::string>& a, const std::optional<std::string>& b) {
    return a && b ? Text::equal(*a, *b) : a.has_value() == b.has_value();
}

/// All fields except texts.
auto plainFields(const CaptionSegment& s) {
    return std::tie(s.id, s.translationUnitID, s.translationResultSegmentID, s.translationUnitIndex,
                    s.translationUnitCount, s.revision, s.state, s.freezeKind, s.startedAt,
                    s.endedAt, s.committedAt, s.firstSeenAt, s.revisionCount);
}

} // namespace

std::string_view name(CaptionSegmentState state) {
    return state == CaptionSegmentState::partial ? "partial" : "final";
}

std::string_view name(FreezeKind kind) {
    switch (kind) {
    case FreezeKind::none:
        return "none";
    case FreezeKind::soft:
        return "soft";
    case FreezeKind::ours:
        return "ours";
    case FreezeKind::engine:
        return "engine";
    }
    return {};
}

std::string_view markerSuffix(FreezeKind kind) {
    switch (kind) {
    case FreezeKind::none:
        return "";
    case FreezeKind::soft:
        return " ◌";
    case FreezeKind::ours:
        return " 🔒";
    case FreezeKind::engine:
        return " 🏁";
    }
    return "";
}

bool CaptionSegment::operator==(const CaptionSegment& other) const {
    return plainFields(*this) == plainFields(other) && Text::equal(sourceText, other.sourceText) &&
           equal(translatedText, other.translatedText) &&
           equal(translationError, other.translationError);
}

} // namespace tessarune
