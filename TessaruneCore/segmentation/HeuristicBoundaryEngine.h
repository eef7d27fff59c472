#pragma once

#include "TessaruneCore/segmentation/BoundaryEngine.h"
#include "TessaruneCore/segmentation/SentenceCuts.h"
#include "TessaruneCore/segmentation/SentencePipeline.h"
#include "TessaruneCore/segmentation/StabilityKeyList.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// Cuts by punctuation and length (`SentenceSegmenter`) and freezes what stays unchanged
/// (`SentencePipeline`). A partial costs one pass over its text; stability keys are computed only
/// for pieces that changed since the previous partial.
class HeuristicBoundaryEngine final : public BoundaryEngine {
  public:
    explicit HeuristicBoundaryEngine(double freezeStableSeconds = 0.6)
        : pipeline_(freezeStableSeconds) {}

    void reset() override;
    BoundaryDecision ingestPartial(std::string_view text, const BoundaryContext& context,
                                   double now) override;
    BoundaryDecision ingestFinal(std::string_view text, const BoundaryContext& context) override;

  private:
    std::vector<std::string> softPieces(const std::vector<std::string>& excludedKeys,
                                        std::size_t firstExcluded);

    SentencePipeline pipeline_;
    SentenceCuts cuts_;
    StabilityKeyList clauseKeys_; ///< of the last partial's clauses
    StabilityKeyList
        leadingKeys_; ///< of the last partial's leading sentences; used only while freezing is off
};

} // namespace tessarune
