// Replays any log: no crash, every row counted, and the same result when repeated.
#include "TessaruneCore/replay/CaptionReplay.h"
#include "tests/fuzz/Fuzz.h"

#include <string>
#include <vector>

namespace {

using namespace tessarune;

std::vector<ASREventRecord> records(fuzz::Input& input) {
    // An event is a byte for its kind, a byte for its delay, and its text up to a line feed.
    static const double pauses[] = {0.0, 0.03125, 0.0625, 0.25, 0.625, 1.0, 4.0, 4.5};
    std::vector<ASREventRecord> log;
    double t = input.flag() ? 1000 : 0;
    while (!input.rest().empty() && log.size() < 200) {
        const std::uint8_t kind = input.byte();
        t += pauses[input.byte() % 8];
        const std::string text = input.line();
        if (kind % 4 != 0)
            log.emplace_back(t, ASREvent::partial(text, kind, t));
        else
            log.emplace_back(t, ASREvent::final(text, t - 1, t, EndpointReason::silence));
    }
    return log;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::uint8_t options = input.byte();
    CaptionCore::Config config((options & 3) != 0, (options & 4) == 0, (options & 8) == 0);
    config.freezeStableSeconds = (options & 16) == 0 ? 0.6 : 0.0;
    config.earlyCutSelfSegmenting = (options & 32) != 0;
    EngineCapabilities caps;
    caps.punctuatesNatively = true;
    caps.selfSegments = (options & 64) != 0;
    caps.boundaryUnit = (options & 128) != 0 ? BoundaryUnit::characters : BoundaryUnit::words;
    const auto log = records(input);

    const auto output = CaptionReplay::run(log, config, caps);
    const auto rows = static_cast<std::int64_t>(output.segments.size());
    fuzz::require(output.lockCount + output.finalCount == rows, "a row that is not counted");
    fuzz::require(static_cast<std::int64_t>(output.committedLines.size()) == rows,
                  "rows without lines");
    for (const auto& row : output.segments)
        fuzz::require(!row.sourceText.empty(), "an empty row");
    for (const std::string& line : output.liveLines)
        fuzz::require(!line.empty(), "an empty live line");
    fuzz::require(CaptionReplay::run(log, config, caps).transcript() == output.transcript(),
                  "a transcript that changes when repeated");
    return 0;
}
