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

/// Ready-made rows of the captions, kept current by the cheapest step that does: all anew, the rows
/// that were added, or those of one translation. What it costs to say that a word has changed does
/// not grow with the session.
///
/// Every visible change of a row raises a revision; revisions never repeat while the program runs.
///
/// Main queue, without a lock. The session owns it for as long as the program runs; a new session
/// makes it all anew from then empty lists. Nothing fails.
class LiveCaptionDisplayCache {
  public:
    using Patch = LiveCaptionDisplayTranslationPatch;

    /// What the captions are at this moment; read during `update` only.
    struct Captions {
        std::span<const CaptionSegment> committed;
        std::span<const CaptionSegment> liveLeading;
        std::span<const CaptionSegment> softCaptions;
        const CaptionSegment& partial;
        const std::unordered_set<UUID>& clearedSegmentIDs;
    };

    /// `now` gives seconds, for the times that updates take.
    explicit LiveCaptionDisplayCache(std::function<double()> now) : now_(std::move(now)) {}
    LiveCaptionDisplayCache(const LiveCaptionDisplayCache&) = delete;

    /// Whether a refresh for this reason makes everything anew.
    static bool isForced(std::string_view reason);

    /// Takes over what has changed. `patch` is null unless exactly one unit was translated or
    /// failed; the committed rows say so already.
    void update(const Captions& captions, bool force, const Patch* patch);

    /// The rows and revisions of a frame. The texts beside the rows are the session's.
    LiveCaptionDisplayFrame frame() const;

    /// All that is shown: committed rows, the live tail, and the open rest if it is visible.
    SharedVector<CaptionSegment> sourceSegments() const;
    std::size_t sourceSegmentCount() const;

    std::int64_t sourceFullRebuildCount() const { return sourceFullRebuildCount_; }
    std::int64_t sourceAppendUpdateCount() const { return sourceAppendUpdateCount_; }
    /// Seconds spent in the last update.
    double lastSourceUpdateElapsed() const { return lastSourceUpdateElapsed_; }
    double lastTranslationUpdateElapsed() const { return lastTranslationUpdateElapsed_; }

  private:
    using IndexByID = std::unordered_map<UUID, std::size_t>;

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

    SharedVector<CaptionSegment> stableSourceSegments_; // committed, without those cleared
    std::vector<CaptionSegment> liveTailSegments_;      // live and not committed
    LiveCaptionDisplayRows sourceTextRows_;
    LiveCaptionDisplayRows liveTailRows_;
    MergedBilingualRows mergedBilingual_; // of `sourceTextRows_`
    LiveCaptionDisplayRows mergedBilingualLiveTailRows_;
    std::optional<CaptionSegment> livePartialSegment_;
    std::optional<LiveCaptionDisplaySegment> livePartialRow_;
    SharedVector<std::string> translationRows_;

    IndexByID stableSourceSegmentIndexByID_;
    IndexByID sourceRowIndexByID_;
    IndexByID translationRowIndexByResultSegmentID_;
    /// Where the segment of the last translation row stands in `stableSourceSegments_`.
    std::size_t lastTranslatedSegmentIndex_ = 0;

    std::int64_t sourceRevision_ = 0;
    std::int64_t translationRevision_ = 0;
    std::int64_t sourceFullRebuildCount_ = 0;
    std::int64_t sourceAppendUpdateCount_ = 0;
    double lastSourceUpdateElapsed_ = 0;
    double lastTranslationUpdateElapsed_ = 0;
};

} // namespace tessarune
