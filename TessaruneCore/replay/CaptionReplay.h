#pragma once

#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/recognition/ASREventRecord.h"
#include "TessaruneCore/recognition/EngineCapabilities.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Runs a recorded event log through a real `CaptionCore` in simulated time, to judge changes of
/// the caption logic on real sessions. The same records with the same settings give the same
/// output, including identifiers.
namespace tessarune::CaptionReplay {

struct Output {
    std::vector<std::string> committedLines; ///< a line a committed row, with its marker
    std::vector<std::string> liveLines;      ///< what was still open when the log ended
    std::int64_t lockCount = 0;
    std::int64_t finalCount = 0;
    std::vector<std::string> segmentTimings; ///< a line a committed row
    CaptionCore::Rows segments;
    CaptionCore::WordEvents wordEvents;

    /// The captions as a reader sees them.
    std::string transcript() const;
};

/// Called after each activity of the core, when a display would draw. `t` is the simulated time.
using Observer =
    std::function<void(const CaptionCore& core, CaptionCore::Activity activity, double t)>;

/// `records` are in the order of the log's reader; those that are no events are passed over.
Output run(const std::vector<ASREventRecord>& records, const CaptionCore::Config& config,
           const EngineCapabilities& caps, const Observer& observer = {});

/// Replays the log of a diagnostics run, with its marks: returns the rows that the session had when
/// the run ended.
Output runMarked(const std::vector<ASREventRecord>& records, const EngineCapabilities& caps);

} // namespace tessarune::CaptionReplay
