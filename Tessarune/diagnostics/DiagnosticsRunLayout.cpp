#include "Tessarune/diagnostics/DiagnosticsRunLayout.h"

#include <algorithm>
#include <stdexcept>

namespace tessarune::DiagnosticsRunLayout {

const std::vector<Artifact>& artifacts() {
    static const std::vector<Artifact> table{
        {.name = "manifest",
         .path = "manifest.json",
         .content = Content::settings,
         .isInCoreRuns = true,
         .isListed = false,
         .written = "when recording begins, and again when the session has ended",
         .description = "Description of the session and the files of its run.",
         .holdsText = false},
        {.name = "settings",
         .path = "settings.json",
         .content = Content::settings,
         .isInCoreRuns = true,
         .written = "when the session starts",
         .description = "Settings snapshot captured at session start.",
         .holdsText = false},
        {.name = "timeline",
         .path = "timeline.json",
         .content = Content::captions,
         .written = "when the session has ended",
         .description = "Arena-compatible live timeline."},
        {.name = "transcript",
         .path = "transcript.txt",
         .content = Content::captions,
         .written = "when the session has ended",
         .description = "Diagnostics transcript snapshot. For the exact subtitle-window contents "
                        "at stop, use live-window-stop-*."},
        {.name = "bilingualTranscript",
         .path = "bilingual-transcript.txt",
         .content = Content::captions,
         .written = "when the session has ended",
         .description = "Diagnostics bilingual transcript snapshot when translation is available. "
                        "For exact stop-time window contents, use live-window-stop-bilingual.txt."},
        {.name = "liveWindowStopSnapshot",
         .path = "live-window-stop-snapshot.json",
         .content = Content::captions,
         .written = "when the session stops",
         .description = "Exact live subtitle window payload captured after stop translation drain "
                        "and before audio compression/refinement."},
        {.name = "liveWindowStopSource",
         .path = "live-window-stop-source.txt",
         .content = Content::captions,
         .written = "when the session stops",
         .description = "Exact stop-time live subtitle source text."},
        {.name = "liveWindowStopBilingual",
         .path = "live-window-stop-bilingual.txt",
         .content = Content::captions,
         .written = "when the session stops",
         .description = "Exact stop-time live subtitle source + translation text."},
        {.name = "perfSamples",
         .path = "perf.csv",
         .content = Content::performance,
         .written = "during the session",
         .description = "Process-level performance samples.",
         .holdsText = false},
        {.name = "perfThreads",
         .path = "perf_threads.ndjson",
         .content = Content::performance,
         .written = "during the session",
         .description = "Per-sample top process threads by CPU, which tell main-thread, runtime "
                        "and engine-side load apart.",
         .holdsText = false},
        {.name = "perfPipeline",
         .path = "perf_pipeline.ndjson",
         .content = Content::performance,
         .written = "during the session",
         .description = "Per-sample live pipeline counters and deltas aligned with perf.csv.",
         .holdsText = false},
        {.name = "perfSummary",
         .path = "perf.json",
         .content = Content::performance,
         .written = "when the session has ended",
         .description = "Run-level performance metadata and engine counters.",
         .holdsText = false},
        {.name = "idleMemorySentinel",
         .path = "events/idle_memory_sentinel.ndjson",
         .content = Content::idle,
         .written = "after the session",
         .description = "Post-stop low-frequency idle memory samples for catching leaks after "
                        "recording has finished.",
         .holdsText = false},
        {.name = "idleMemoryAlarms",
         .path = "events/idle_memory_alarm.ndjson",
         .content = Content::idle,
         .written = "after the session",
         .description = "Detailed snapshots emitted whenever post-stop process memory crosses a "
                        "new 1 GB threshold.",
         .holdsText = false},
        {.name = "asrEvents",
         .path = "events/<option>.ndjson",
         .content = Content::recognition,
         .written = "during the session",
         .description = "Raw ASR events for replay/sweep."},
        {.name = "appleSummaryResults",
         .path = "events/apple_summary.ndjson",
         .content = Content::recognition,
         .condition = "`appleAnalyzerDiagnosticsMode` is `summary` or `fullRaw`",
         .written = "during the session",
         .description = "Low-cost Apple SpeechTranscriber result summary for long live runs."},
        {.name = "appleRawResults",
         .path = "events/apple_raw.ndjson",
         .content = Content::recognition,
         .condition = "`appleAnalyzerDiagnosticsMode` is `fullRaw`",
         .written = "during the session",
         .description = "Opt-in full Apple SpeechTranscriber.Result expansion before Tessarune "
                        "coalescing/boundary/freeze processing."},
        {.name = "appleFinalReconcile",
         .path = "events/apple_reconcile.ndjson",
         .content = Content::recognition,
         .written = "during the session",
         .description = "Tessarune live-final arbitration: Apple final vs last partial, including "
                        "dirty low-confidence final rescue and suppressed final fragments."},
        {.name = "boundaryEvents",
         .path = "events/boundary.ndjson",
         .content = Content::captions,
         .written = "during the session",
         .description = "Boundary decisions emitted by BoundaryEngine."},
        {.name = "corrections",
         .path = "events/correction.ndjson",
         .content = Content::captions,
         .isListed = false,
         .written = "during the session",
         .description = "Changes of finals to the words on the screen."},
        {.name = "translationEvents",
         .path = "events/translation.ndjson",
         .content = Content::translation,
         .written = "during the session",
         .description = "Translation start/success/failure observations with translation unit IDs, "
                        "member segment IDs, and visible result segment IDs."},
        {.name = "liveCaptionEvents",
         .path = "events/live_caption.ndjson",
         .content = Content::display,
         .written = "during the session",
         .description = "Live caption display observations: frame build/update, display settings, "
                        "and layout-mode evidence. In non-fullRaw Apple diagnostics modes, "
                        "high-frequency partial/core activity frames are sampled."},
        {.name = "displayUnitEvents",
         .path = "events/display_units.ndjson",
         .content = Content::display,
         .written = "during the session",
         .description = "Published display-frame text unit tail samples with hashes/previews and "
                        "translation unit linkage. In non-fullRaw Apple diagnostics modes, "
                        "high-frequency partial/core activity frames are sampled."},
        {.name = "refineLifecycleEvents",
         .path = "events/refine_lifecycle.ndjson",
         .content = Content::refinement,
         .condition = "the recording is transcribed again",
         .written = "after the session",
         .description = "Background history refinement spans linked to this recording."},
        {.name = "refineAppleSummary",
         .path = "events/refine_apple_summary.ndjson",
         .content = Content::refinement,
         .condition = "the recording is transcribed again",
         .written = "after the session",
         .description =
             "Apple SpeechAnalyzer file-mode result summaries from stop-time history refinement."},
        {.name = "refineSegments",
         .path = "events/refine_segments.ndjson",
         .content = Content::refinement,
         .condition = "the recording is transcribed again",
         .written = "after the session",
         .description =
             "File-mode split/coalesced segments that overwrite the saved history transcript."},
        {.name = "refineTranslation",
         .path = "events/refine_translation.ndjson",
         .content = Content::refinement,
         .condition = "the recording is transcribed again",
         .written = "after the session",
         .description = "Stop-time refined translation starts/successes/failures."},
        {.name = "lifecycleEvents",
         .path = "events/lifecycle.ndjson",
         .content = Content::lifecycle,
         .isInCoreRuns = true,
         .written = "during the session",
         .description = "Session lifecycle spans for start, stop, persistence, and diagnostics.",
         .holdsText = false},
        {.name = "reportMarkdown",
         .path = "report/diagnostics-report.md",
         .content = Content::report,
         .written = "by a report tool",
         .description = "Generated report after running report command."},
        {.name = "reportJSON",
         .path = "report/diagnostics-report.json",
         .content = Content::report,
         .written = "by a report tool",
         .description = "Machine-readable diagnostics report after running report command."},
    };
    return table;
}

const Artifact& artifact(std::string_view name) {
    const auto found = std::ranges::find(artifacts(), name, &Artifact::name);
    if (found == artifacts().end())
        throw std::out_of_range("no such file in a diagnostics run: " + std::string(name));
    return *found;
}

std::string path(const Artifact& artifact, std::string_view optionID) {
    constexpr std::string_view placeholder = "<option>";
    std::string path(artifact.path);
    const std::size_t at = path.find(placeholder);
    if (at == std::string::npos)
        return path;
    std::string name(optionID);
    std::ranges::replace(name, '/', '-');
    std::ranges::replace(name, ' ', '_');
    return path.replace(at, placeholder.size(), name);
}

std::string_view description(const Artifact& artifact, bool isFullRun) {
    if (artifact.name == "lifecycleEvents" && !isFullRun)
        return "Core session lifecycle breadcrumbs, including start and stop trigger reason.";
    return artifact.description;
}

} // namespace tessarune::DiagnosticsRunLayout
