#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/segmentation/SentenceStabilityKey.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

using RowIterator = CaptionCore::Rows::const_iterator;

/// Grows the capacity by an eighth. Doubling would leave up to half of a long list's memory unused.
void append(CaptionCore::Rows& rows, const CaptionSegment& row) {
    constexpr std::size_t smallest = 64;
    if (rows.size() == rows.capacity())
        rows.reserve(rows.size() + std::max(rows.size() / 8, smallest));
    rows.push_back(row);
}

} // namespace

/// Returns the words of each sentence with their times, and how often the sentence changed. Adds
/// the words to the tracker's count of committed words, at which the next call continues. `churn`
/// has the change counts of leading sentences; `audioTimings` has the words of the entire utterance
/// or is null.
std::vector<CaptionCore::SegmentMeta>
CaptionCore::consumeMeta(const Sentences& sentences, const std::vector<std::int64_t>& churn,
                         const std::vector<ASRWordTiming>* audioTimings) {
    std::vector<SegmentMeta> metas;
    metas.reserve(sentences.size());
    for (std::size_t i = 0; i < sentences.size(); ++i) {
        SegmentMeta meta;
        // Word positions count from the start of the utterance, including sentences that are later
        // skipped as duplicates.
        auto k = static_cast<std::size_t>(tracker_.committedWordCount);
        for (const std::string_view word : Text::splitAtBlanks(sentences[i])) {
            WordEvent event;
            event.word = word;
            if (k < tracker_.wordFirstSeen.size())
                event.firstSeenAt = tracker_.wordFirstSeen[k];
            if (k < tracker_.wordRevealed.size())
                event.revealedAt = tracker_.wordRevealed[k];
            if (audioTimings && k < audioTimings->size()) {
                event.audioStart = (*audioTimings)[k].start;
                event.audioEnd = (*audioTimings)[k].end;
            }
            meta.words.push_back(std::move(event));
            ++k;
        }
        if (!meta.words.empty())
            meta.firstSeenAt = meta.words.front().firstSeenAt;
        // A sentence that was never a leading one takes the tail's change count.
        meta.revisionCount = i < churn.size() ? churn[i] : tracker_.tailChangeCount;
        tracker_.committedWordCount = static_cast<std::int64_t>(k);
        metas.push_back(std::move(meta));
    }
    return metas;
}

CaptionCore::Rows CaptionCore::commitSentences(const Sentences& sentences, FreezeKind kind,
                                               double startedAt, std::optional<double> endedAt,
                                               const std::vector<SegmentMeta>& meta) {
    const double t = now_();
    const std::size_t skip = committedOverlapPrefixCount(sentences, kind, t);
    if (skip >= 1) {
        TessaruneLog::asr.verbose([&] {
            return "Tessarune skipped " + std::to_string(skip) + " duplicate " +
                   (kind == FreezeKind::engine ? "engine final" : "local agreement") +
                   " segment(s) already committed";
        });
    }
    Rows added;
    for (std::size_t i = skip; i < sentences.size(); ++i) {
        revision_ = nextRevision();
        CaptionSegment row;
        row.id = newUUID_();
        row.sourceText = sentences[i];
        row.revision = revision_;
        row.state = CaptionSegmentState::final;
        row.freezeKind = kind;
        row.startedAt = startedAt;
        row.endedAt = endedAt;
        row.committedAt = t;
        if (i < meta.size()) {
            row.firstSeenAt = meta[i].firstSeenAt;
            row.revisionCount = meta[i].revisionCount;
        }
        committedSegments.mutate([&](Rows& rows) { append(rows, row); });
        if (i < meta.size() && !meta[i].words.empty())
            wordEvents_[row.id] = meta[i].words;
        added.push_back(std::move(row));
    }
    return added;
}

/// Returns the largest n for which the first n `keys` equal the keys of the last n committed rows,
/// and `mayMatch` accepts these rows. 0 if there is none.
template <typename MayMatch>
std::size_t CaptionCore::overlapPrefixCount(const Sentences& keys, MayMatch mayMatch) const {
    const Rows& rows = *committedSegments;
    const std::size_t longest = std::min(rows.size(), keys.size());
    const RowIterator first = rows.end() - static_cast<std::ptrdiff_t>(longest);
    Sentences tailKeys;
    tailKeys.reserve(longest);
    for (RowIterator row = first; row != rows.end(); ++row)
        tailKeys.push_back(SentenceStabilityKey::normalize(row->sourceText));
    for (std::size_t n = longest; n >= 1; --n) {
        const auto skipped = static_cast<std::ptrdiff_t>(longest - n);
        if (mayMatch(first + skipped, rows.end()) &&
            std::equal(tailKeys.begin() + skipped, tailKeys.end(), keys.begin()))
            return n;
    }
    return 0;
}

std::size_t CaptionCore::committedOverlapPrefixCount(const Sentences& sentences, FreezeKind kind,
                                                     double t) const {
    if (sentences.empty() || committedSegments->empty())
        return 0;
    if (kind == FreezeKind::ours)
        return recentLocalAgreementOverlapPrefixCount(sentences, t);
    if (kind != FreezeKind::engine)
        return 0;
    // A final may confirm a freeze of any age. If none of the matching rows was frozen, nothing is
    // skipped.
    return overlapPrefixCount(SentenceStabilityKey::normalize(sentences),
                              [](RowIterator first, RowIterator last) {
                                  return std::any_of(first, last, [](const CaptionSegment& row) {
                                      return row.freezeKind == FreezeKind::ours;
                                  });
                              });
}

std::size_t CaptionCore::recentLocalAgreementOverlapPrefixCount(const Sentences& sentences,
                                                                double t) const {
    return overlapPrefixCount(
        SentenceStabilityKey::normalize(sentences), [&](RowIterator first, RowIterator last) {
            return std::all_of(first, last, [&](const CaptionSegment& row) {
                return row.freezeKind == FreezeKind::ours && committedWithinWindow(row, t);
            });
        });
}

std::size_t CaptionCore::sealedLiveOverlapPrefixCount(const Rows& segments, double t) const {
    Sentences keys;
    keys.reserve(segments.size());
    for (const CaptionSegment& segment : segments)
        keys.push_back(SentenceStabilityKey::normalize(segment.sourceText));
    return overlapPrefixCount(keys, [&](RowIterator first, RowIterator last) {
        return std::all_of(
            first, last, [&](const CaptionSegment& row) { return committedWithinWindow(row, t); });
    });
}

bool CaptionCore::committedWithinWindow(const CaptionSegment& row, double t) const {
    return row.committedAt &&
           t - *row.committedAt <= std::max(config_().duplicateCommitWindowSeconds, 0.0);
}

CaptionCore::LiveTail CaptionCore::liveTail(const Rows& segments, std::string_view tail) {
    const std::string_view fullTail = Text::trimmed(tail);
    std::string_view remaining = fullTail;
    if (remaining.empty())
        return {"", true};
    for (const CaptionSegment& segment : segments) {
        const std::string_view prefix = Text::trimmed(segment.sourceText);
        if (prefix.empty())
            continue;
        if (!Text::hasPrefix(remaining, prefix))
            return {std::string(fullTail), false};
        remaining = Text::trimmed(Text::dropFirst(remaining, Text::length(prefix)));
    }
    return {std::string(remaining), true};
}

std::vector<UUID> CaptionCore::sealLiveIntoHistory(double t) {
    Rows rows;
    const auto seal = [&](CaptionSegment row) {
        row.state = CaptionSegmentState::final;
        row.endedAt = t;
        rows.push_back(std::move(row));
    };
    for (const CaptionSegment& row : *liveLeadingSentences)
        seal(row);
    liveLeadingSentences = Rows();
    for (const CaptionSegment& row : *softCaptionSegments) {
        seal(row);
        rows.back().freezeKind = FreezeKind::none;
    }
    resetSoftCaptions(SoftCaptionObservation::Phase::seal, "sealLiveIntoHistory", std::nullopt);
    resetBoundaries();
    if (!Text::trimmed(currentPartial->sourceText).empty())
        seal(*currentPartial);

    const std::size_t skip = sealedLiveOverlapPrefixCount(rows, t);
    if (skip >= 1) {
        TessaruneLog::asr.verbose([&] {
            return "Tessarune skipped " + std::to_string(skip) +
                   " duplicate live seal segment(s) already committed";
        });
    }
    std::vector<UUID> added;
    for (std::size_t i = skip; i < rows.size(); ++i) {
        added.push_back(rows[i].id);
        committedSegments.mutate([&](Rows& committed) { append(committed, rows[i]); });
    }
    tracker_ = UtteranceTracker();
    currentPartial = freshPartial(t);
    return added;
}

} // namespace tessarune
