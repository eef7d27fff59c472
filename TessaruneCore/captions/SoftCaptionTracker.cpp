#include "TessaruneCore/captions/SoftCaptionTracker.h"

#include "TessaruneCore/text/Text.h"

#include <utility>

namespace tessarune {

namespace {

CaptionSegment segment(const SoftCaptionTracker::Row& row, std::int64_t revision) {
    CaptionSegment segment;
    segment.id = row.id;
    segment.sourceText = row.text;
    segment.revision = revision;
    segment.state = CaptionSegmentState::final;
    segment.freezeKind = FreezeKind::soft;
    segment.startedAt = row.firstSeenAt;
    segment.firstSeenAt = row.firstSeenAt;
    return segment;
}

} // namespace

void SoftCaptionTracker::clear() {
    rows.clear();
    visibleSnapshot.clear();
}

SoftCaptionTracker::Advance SoftCaptionTracker::advance(const std::vector<std::string>& candidates,
                                                        bool enabled, double stableSeconds,
                                                        double now, std::int64_t revision,
                                                        const UUIDSource& newID) {
    Advance result;
    if (!enabled) {
        result.changed = !isEmpty();
        clear();
        return result;
    }

    std::vector<std::string_view> texts;
    texts.reserve(candidates.size());
    for (const auto& candidate : candidates) {
        const std::string_view text = Text::trimmed(candidate);
        if (!text.empty())
            texts.push_back(text);
    }
    keys_.assign(texts);
    for (std::size_t position = 0; position < texts.size(); ++position)
        place(position, texts[position], stableSeconds, now, newID);
    rows.resize(texts.size());

    result.segments.reserve(rows.size());
    for (const auto& row : rows) {
        if (!row.visible)
            continue;
        const std::size_t index = result.segments.size();
        result.segments.push_back(segment(row, revision));
        if (index == visibleSnapshot.size())
            visibleSnapshot.emplace_back();
        else if (visibleSnapshot[index] == row.normalized)
            continue;
        visibleSnapshot[index] = row.normalized;
        result.changed = true;
    }
    result.changed = result.changed || visibleSnapshot.size() > result.segments.size();
    visibleSnapshot.resize(result.segments.size());
    return result;
}

/// Keeps the row at `position`, with its times, if `text` has the row's stability key; otherwise
/// replaces the row.
void SoftCaptionTracker::place(std::size_t position, std::string_view text, double stableSeconds,
                               double now, const UUIDSource& newID) {
    const bool known = position < rows.size();
    const std::string& key = keys_.keys()[position];
    if (known && rows[position].normalized == key) {
        Row& row = rows[position];
        row.text = text;
        row.visible = row.visible || now - row.stableSince >= stableSeconds;
        return;
    }
    Row fresh{newID(), std::string(text), key, now, now, stableSeconds <= 0};
    if (known)
        rows[position] = std::move(fresh);
    else
        rows.push_back(std::move(fresh));
}

bool SoftCaptionTracker::Row::operator==(const Row& other) const {
    return id == other.id && Text::equal(text, other.text) && normalized == other.normalized &&
           firstSeenAt == other.firstSeenAt && stableSince == other.stableSince &&
           visible == other.visible;
}

} // namespace tessarune
