#include "Tessarune/session/LiveResourceCleanup.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"

#include <exception>

namespace tessarune::LiveResourceCleanup {

namespace {

void truncateDebugLog(const Resources& resources) {
    try {
        if (resources.debugLog)
            resources.files.truncate(*resources.debugLog, 0);
    } catch (const std::exception&) {
        // The debug log is only a trace for developers.
    }
}

} // namespace

void releaseIdleResources(const Resources& resources) {
    truncateDebugLog(resources);
    TessaruneLog::app.notice(
        [] { return "Tessarune bigCleanup: released translation sessions + caches"; });
    resources.utilityQueue->async([returnMemory = resources.returnMemory] {
        if (returnMemory)
            returnMemory();
        TessaruneLog::app.notice(
            [] { return "Tessarune bigCleanup: returned memory to OS (background)"; });
    });
}

} // namespace tessarune::LiveResourceCleanup
