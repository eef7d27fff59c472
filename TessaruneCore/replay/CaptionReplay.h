#pragma once

#include "TessaruneCore/CaptionCore.h"
#include "TessaruneCore/recognition/ASREventRecord.h"
#include "TessaruneCore/recognition/EngineCapabilities.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Runs a recorded event log through a real `CaptionCore` on simulated time: how a change to the
/// caption logic is judged against real sessions. No real time passes, and the same records with
/// the same settings give the same output, identities included.
namespace tessarune::CaptionReplay {

struct Output {
    std::vector<std::string> committedLines; ///< a line a committed row, with its marker
    std::vector<std::string> liveLines;      ///< what was still open when the log ended
    std::int64_t lockCount = 0;
    std::int64_t finalCount = 0;
    std::vector<std::string> segmentTimings; ///< a line a committed row
    CaptionCore::Rows segments;
    CaptionCore::WordEvents wordEvents;

    /// What a reader of the captions would have in front of them.
    std::string transcript() const;
};

/// Sees the core after each of its activities, when a display would draw. `t` is the simulated
/// time.
using Observer =
    std::function<void(const CaptionCore& core, CaptionCore::Activity activity, double t)>;

/// `records` in the order in which the log's reader gives them.
Output run(const std::vector<ASREventRecord>& records, const CaptionCore::Config& config,
           const EngineCapabilities& caps, const Observer& observer = {});

} // namespace tessarune::CaptionReplay
