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
    std::vector<std::string> committedLines; ///< the committed rows, marked by their `FreezeKind`
    std::vector<std::string> liveLines;      ///< the text still open when the log ended
    std::int64_t lockCount = 0;
    std::int64_t finalCount = 0;
    std::vector<std::string> segmentTimings; ///< one line per committed row
    CaptionCore::Rows segments;
    CaptionCore::WordEvents wordEvents;

    /// The committed and the open lines as one text.
    std::string transcript() const;
};

/// Called after each activity of the core, when a display would draw. `t` is the simulated time.
using Observer =
    std::function<void(const CaptionCore& core, CaptionCore::Activity activity, double t)>;

/// Replays `records`, which are sorted by time. Skips records that are not events.
Output run(const std::vector<ASREventRecord>& records, const CaptionCore::Config& config,
           const EngineCapabilities& caps, const Observer& observer = {});

/// Replays the log of a diagnostics run, including its marks. The output has the rows of the
/// session at the end of the run.
Output runMarked(const std::vector<ASREventRecord>& records, const EngineCapabilities& caps);

} // namespace tessarune::CaptionReplay
