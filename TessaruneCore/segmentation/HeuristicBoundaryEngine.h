#pragma once

#include "TessaruneCore/segmentation/BoundaryEngine.h"
#include "TessaruneCore/segmentation/SentencePipeline.h"

#include <string_view>

namespace tessarune {

/// Cuts by punctuation and length (`SentenceSegmenter`) and fixes what stays unchanged
/// (`SentencePipeline`).
class HeuristicBoundaryEngine final : public BoundaryEngine {
  public:
    explicit HeuristicBoundaryEngine(double freezeStableSeconds = 0.6)
        : pipeline_(freezeStableSeconds) {}

    void reset() override;
    BoundaryDecision ingestPartial(std::string_view text, const BoundaryContext& context,
                                   double now) override;
    BoundaryDecision ingestFinal(std::string_view text, const BoundaryContext& context) override;

    const SentencePipeline& pipeline() const { return pipeline_; }

  private:
    SentencePipeline pipeline_;
};

} // namespace tessarune
