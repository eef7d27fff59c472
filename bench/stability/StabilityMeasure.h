#pragma once

#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/recognition/ASREventRecord.h"
#include "TessaruneCore/recognition/EngineCapabilities.h"
#include "bench/stability/WordTrace.h"

#include <cstddef>
#include <vector>

namespace tessarune {

/// What a reader of a text saw, and how far it is from what the recogniser said in the end.
struct MeasuredText {
    Stability printed;          ///< words as they are printed: case and punctuation count
    Stability spoken;           ///< words as they sound
    std::size_t finalWords = 0; ///< in the recogniser's finals, as they sound
    std::size_t unlike = 0;     ///< of these, words that were settled as others, or not at all

    void add(const MeasuredText& other);
    double unlikeShare() const;
};

/// Measures over one event log, whose records stand in the order in which its reader gives them.
namespace StabilityMeasure {

/// The recogniser's own words: its finals, and behind them the newest partial. A final settles.
MeasuredText ofRecogniser(const std::vector<ASREventRecord>& records);

/// What the captions show: committed rows, and behind them the leading sentences, the soft captions
/// and the open rest. A commit settles. The log is replayed on simulated time.
MeasuredText ofCaptions(const std::vector<ASREventRecord>& records,
                        const CaptionCore::Config& config, const EngineCapabilities& caps);

} // namespace StabilityMeasure
} // namespace tessarune
