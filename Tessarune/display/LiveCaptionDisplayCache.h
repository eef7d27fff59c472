#pragma once

#include "Tessarune/display/LiveCaptionDisplayFrame.h"
#include "Tessarune/display/LiveCaptionDisplaySignatures.h"
#include "Tessarune/display/MergedBilingualRows.h"
#include "TessaruneCore/captions/CaptionSegment.h"
#include "TessaruneCore/translation/LiveCaptionDisplayTranslationPatch.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace tessarune {

/// Prepared rows of the captions, kept current by the cheapest sufficient step: a full rebuild, an
/// append, or a change of the rows of one translated unit. The cost of a changed word does not grow
/// with the session.
///
/// Every visible change of a row raises a revision; revisions never repeat while the program runs.
///
/// Main queue, without a lock. `LiveTranscriptStore` uses one cache for all its sessions; each
/// start of a session rebuilds the cache from empty lists. No operation fails.
class LiveCaptionDisplayCache {
  public:
    using Patch = LiveCaptionDisplayTranslationPatch;

    /// The current captions; read during `update` only.
    struct Captions {
        std::span<const CaptionSegment> committed;
        std::span<const CaptionSegment> liveLeading;
        std::span<const CaptionSegment> softCaptions;
        const CaptionSegment& partial;
        const std::unordered_set<UUID>& clearedSegmentIDs;
    };

    /// `now` returns the time in seconds; the cache measures with it how long updates take.
    explicit LiveCaptionDisplayCache(std::function<double()> now) : now_(std::move(now)) {}
    LiveCaptionDisplayCache(const LiveCaptionDisplayCache&) = delete;

    /// Whether a refresh for this reason rebuilds everything.
    static bool isForced(std::string_view reason);

    /// Updates the rows. `patch` is null unless exactly one unit was translated or failed; the
    /// committed rows already contain its result.
    void update(const Captions& captions, bool force, const Patch* patch);

    /// The rows and revisions of a frame. The session adds the other texts.
    LiveCaptionDisplayFrame frame() const;

    /// The number of visible rows: committed rows, complete sentences of the open utterance, soft
    /// captions, and the open row if it is visible.
    std::size_t sourceSegmentCount() const;
    /// The newest visible rows, at most `limit`, oldest first. `committed` are the rows of the last
    /// update.
    std::vector<CaptionSegment> newestSourceSegments(std::span<const CaptionSegment> committed,
                                                     std::size_t limit) const;

    std::int64_t sourceFullRebuildCount() const { return sourceFullRebuildCount_; }
    std::int64_t sourceAppendUpdateCount() const { return sourceAppendUpdateCount_; }
    /// Seconds spent in the last update.
    double lastSourceUpdateElapsed() const { return lastSourceUpdateElapsed_; }
    double lastTranslationUpdateElapsed() const { return lastTranslationUpdateElapsed_; }

  private:
    using IndexByID = std::unordered_map<UUID, std::size_t>;
    /// The position of a committed segment.
    struct Place {
        std::size_t segment = 0;          // among the segments that are not cleared
        std::optional<std::uint32_t> row; // in `sourceTextRows_`; `nullopt`: it has no visible text
    };

    void updateSourceRows(const Captions& captions, bool force, const Patch* patch);
    void rebuildSourceRows(const Captions& captions);
    bool appendSourceRowsIfPossible(const Captions& captions);
    void addSourceSegment(const CaptionSegment& segment);
    void patchSourceRows(const Patch& patch);
    void updateLiveTailRows(const Captions& captions);
    bool isShownInLiveTail(const UUID& id) const;
    void updateLivePartial(const Captions& captions);
    void updateTranslationRows(const Captions& captions, bool force, const Patch* patch);
    bool patchTranslationRows(const Patch& patch);
    void rebuildTranslationRows(const Captions& captions);
    void addTranslationRow(const Captions& captions, const CaptionSegment& segment);

    const std::function<double()> now_;

    std::optional<SourceSignature> sourceSignature_;
    std::optional<LiveTailSignature> liveTailSignature_;
    std::optional<PartialSignature> partialSignature_;
    std::optional<TranslationSignature> translationSignature_;

    std::vector<CaptionSegment> liveTailSegments_; // the segments of `liveTailRows_`
    LiveCaptionDisplayRows sourceTextRows_;
    LiveCaptionDisplayRows liveTailRows_;
    MergedBilingualRows mergedBilingual_; // made of `sourceTextRows_`
    LiveCaptionDisplayRows mergedBilingualLiveTailRows_;
    std::optional<CaptionSegment> livePartialSegment_;
    std::optional<LiveCaptionDisplaySegment> livePartialRow_;
    SharedVector<std::string> translationRows_;

    std::unordered_map<UUID, Place> places_; // of committed segments that are not cleared
    IndexByID translationRowIndexByResultSegmentID_;
    /// `Place::segment` of the last translation row.
    std::size_t lastTranslatedSegmentIndex_ = 0;

    std::int64_t sourceRevision_ = 0;
    std::int64_t translationRevision_ = 0;
    std::int64_t sourceFullRebuildCount_ = 0;
    std::int64_t sourceAppendUpdateCount_ = 0;
    double lastSourceUpdateElapsed_ = 0;
    double lastTranslationUpdateElapsed_ = 0;
};

} // namespace tessarune
