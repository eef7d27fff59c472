#include "Tessarune/diagnostics/CaptionUnitObservation.h"
#include "Tessarune/diagnostics/SessionDiagnosticsRecorder.h"
#include "Tessarune/diagnostics/SessionDiagnosticsRun.h"
#include "Tessarune/session/LiveCaptionCoreFactory.h"
#include "Tessarune/session/SessionView.h"
#include "TessaruneCore/captions/BoundaryObservationRecord.h"
#include "TessaruneCore/captions/CorrectionObservationRecord.h"
#include "TessaruneCore/recognition/ASREventRecord.h"
#include "TessaruneCore/text/Text.h"

#include <utility>

namespace tessarune {

namespace {

constexpr std::size_t sampledUnitLimit = 8;

/// Appends a record. Its `line()` runs on the log's queue.
template <typename Record>
void appendRecord(DiagnosticsNDJSONWriter* log, Record record) {
    if (log)
        log->append([record = std::move(record)] { return record.line(); });
}

/// Appends a record after converting it to JSON. As in all JSON that the writer encodes, numbers
/// are rounded and keys sorted.
template <typename Record>
void appendConverted(DiagnosticsNDJSONWriter* log, const Record& record) {
    if (!log)
        return;
    log->append([record] {
        const JSON::Ordered json = record;
        return JSON::line(DiagnosticsNDJSONWriter::sanitized(JSON::Value(json)));
    });
}

} // namespace

DiagnosticsNDJSONWriter* SessionDiagnosticsRecorder::log(std::string_view artifact) const {
    if (!run_)
        return nullptr;
    const auto found = run_->logs.find(artifact);
    return found == run_->logs.end() ? nullptr : found->second.get();
}

/// After a run is finished, it still gets the remaining steps of the session.
void SessionDiagnosticsRecorder::lifecycle(const LifecycleEntry& entry) {
    Run* const run = run_ ? run_.get() : finished_.get();
    if (!run)
        return;
    if (run_ && entry.name == "listen.stop.requested")
        run->stopRequestFields = entry.fields;
    run->writeLifecycle(entry);
}

void SessionDiagnosticsRecorder::noteAudioBuffer(double sampleRate) {
    if (!run_ || run_->sampleRate > 0 || !(sampleRate > 0))
        return;
    run_->sampleRate = sampleRate;
    environment_.logger.event("diagnostics.audio.sampleRateObserved",
                              {{"sampleRate", sampleRate}, {"runID", run_->id}});
}

void SessionDiagnosticsRecorder::notePerfStats(const PerfStats& stats) {
    if (isFullDiagnosticsRunning())
        run_->sampler->notePipeline(stats);
}

void SessionDiagnosticsRecorder::appendASREvent(const ASREvent& event, double t) {
    if (environment_.onASREvent)
        environment_.onASREvent(event, t);
    if (auto* events = log("asrEvents")) {
        writeCaptionSettings(t);
        appendRecord(events, ASREventRecord(t, event));
    }
}

void SessionDiagnosticsRecorder::markCaptions(CaptionMark mark, double t) {
    if (auto* events = log("asrEvents")) {
        writeCaptionSettings(t);
        appendRecord(events, captionMarkRecord(mark, t));
    }
}

/// Writes the settings of the captions if they differ from the last ones in the log. A replay uses
/// the last ones that precede an event.
void SessionDiagnosticsRecorder::writeCaptionSettings(double t) {
    const CaptionCore::Config config = LiveCaptionCoreFactory::config(environment_.settings);
    if (run_->captionSettings == config)
        return;
    run_->captionSettings = config;
    appendRecord(log("asrEvents"), captionSettingsRecord(config, t));
}

void SessionDiagnosticsRecorder::appendAppleRawResult(
    const AppleSpeechAnalyzerRawResultRecord& record) {
    appendConverted(log("appleRawResults"), record);
}

void SessionDiagnosticsRecorder::appendAppleSummaryResult(
    const AppleSpeechAnalyzerSummaryRecord& record) {
    appendConverted(log("appleSummaryResults"), record);
}

void SessionDiagnosticsRecorder::appendAppleFinalReconcile(
    const AppleFinalReconcileDecisionRecord& record) {
    appendConverted(log("appleFinalReconcile"), record);
}

void SessionDiagnosticsRecorder::appendBoundary(const BoundaryObservation& observation) {
    if (auto* boundaries = log("boundaryEvents"))
        appendRecord(boundaries, BoundaryObservationRecord(observation));
}

void SessionDiagnosticsRecorder::appendCorrection(const CorrectionObservation& observation) {
    if (auto* corrections = log("corrections"))
        appendRecord(corrections, CorrectionObservationRecord{observation});
}

void SessionDiagnosticsRecorder::appendTranslation(const TranslationObservation& observation) {
    appendConverted(log("translationEvents"), observation);
}

void SessionDiagnosticsRecorder::recordSoftCaption(const SoftCaptionObservation& observation) {
    auto* const captions = log("liveCaptionEvents");
    if (!captions)
        return;
    LogFields record{{"t", observation.t},
                     {"event", "softCaption"},
                     {"phase", std::string(name(observation.phase))},
                     {"enabled", observation.enabled},
                     {"stableSeconds", observation.stableSeconds},
                     {"candidateCount", observation.candidateCount},
                     {"visibleCount", observation.visibleCount},
                     {"sample", observation.sample}};
    if (observation.resetReason)
        record.add("resetReason", *observation.resetReason);
    captions->append(record);
}

void SessionDiagnosticsRecorder::recordCaptionDisplaySettingChange(const std::string& name,
                                                                   const std::string& value) {
    if (auto* captions = log("liveCaptionEvents"))
        captions->append(LogFields{{"t", environment_.host.now()},
                                   {"event", "setting"},
                                   {"name", name},
                                   {"value", value}});
}

void SessionDiagnosticsRecorder::recordCaptionFollow(const std::string& event,
                                                     const LogFields& fields) {
    if (auto* captions = log("liveCaptionEvents"))
        captions->append(
            LogFields{{"t", environment_.host.now()}, {"event", "follow." + event}}.add(fields));
}

void SessionDiagnosticsRecorder::captionDisplayRefreshed(const CaptionDisplayRefresh& refresh) {
    if (!isFullDiagnosticsRunning() || !view_)
        return;
    const AppSettings& settings = environment_.settings;
    const double publishedIndex = refresh.result.publishedFrames - 1;
    if (!shouldRecordDisplayDiagnostics(refresh.reason, publishedIndex, refresh.result.isPublished,
                                        *settings.appleAnalyzerDiagnosticsMode))
        return;
    constexpr double msPerSecond = 1000;
    const LiveCaptions& captions = view_->captions;
    const LiveCaptionDisplayFrame& frame = *refresh.display.frame;
    const CaptionSegment& partial = *captions.currentPartial;
    const auto& perf = refresh.display.perf;
    const double sourceMS = refresh.cache.lastSourceUpdateElapsed() * msPerSecond;
    const double translationMS = refresh.cache.lastTranslationUpdateElapsed() * msPerSecond;
    const double totalMS = refresh.buildSeconds * msPerSecond;
    JSON::Value record = DiagnosticsRunContext::displaySnapshotFields(settings);
    record.erase("liveSubtitleWindowMaxSegments");
    record.update(
        {{"t", refresh.t},
         {"event", "frame.refresh"},
         {"reason", refresh.reason},
         {"sessionPhase", name(*view_->sessionPhase)},
         {"committedCount", captions.committedSegments->size()},
         {"liveLeadingCount", captions.liveLeadingSentences->size()},
         {"softCaptionCount", captions.softCaptionSegments->size()},
         {"clearedCount", view_->clearedSegmentIDs->size()},
         {"hasPartial", !Text::trimmed(partial.sourceText).empty()},
         {"currentPartialID", partial.id.text()},
         {"currentPartialRevision", partial.revision},
         {"currentPartialState", name(partial.state)},
         {"sourceTailCount", refresh.cache.sourceSegmentCount()},
         {"translationTailCount", frame.translationTail.size()},
         {"ghostVisible", !frame.ghostTranslationText.empty()},
         {"ghostSourceCharacters", Text::length(frame.ghostTranslationSourceText)},
         {"statusVisible", !frame.statusMessage.empty()},
         {"translationStatusVisible", !frame.translationStatus.text.empty()},
         {"translationStatusIncomplete", frame.translationStatus.hasIncomplete},
         {"translationRetryAvailable", frame.translationStatus.canRetryIncomplete},
         {"buildSourceMS", sourceMS},
         {"buildTranslationMS", translationMS},
         {"buildStatusMS", std::max(totalMS - sourceMS - translationMS, 0.0)},
         {"buildTotalMS", totalMS},
         {"updateRequestIndex", refresh.result.updateRequests - 1},
         {"publishedFrameIndex", publishedIndex},
         {"published", refresh.result.isPublished},
         {"compareMS", refresh.result.compareMS},
         {"captionStageRenders", perf.captionStageRenders},
         {"captionStageSourceOnlyRenders", perf.captionStageSourceOnlyRenders},
         {"captionStageStandardRenders", perf.captionStageStandardRenders},
         {"captionStageLyricsRenders", perf.captionStageLyricsRenders},
         {"captionStageBilingualCompareRenders", perf.captionStageBilingualCompareRenders}});
    if (auto* log = this->log("liveCaptionEvents"))
        log->append(record);
    if (refresh.result.isPublished)
        writeDisplayUnits(refresh);
}

void SessionDiagnosticsRecorder::writeDisplayUnits(const CaptionDisplayRefresh& refresh) {
    auto* const displayed = log("displayUnitEvents");
    if (!displayed)
        return;
    using namespace CaptionUnitObservation;
    const LiveCaptions& captions = view_->captions;
    const std::size_t count = refresh.cache.sourceSegmentCount();
    const auto newest =
        refresh.cache.newestSourceSegments(*captions.committedSegments, sampledUnitLimit);
    JSON::Value units = JSON::Value::array();
    for (std::size_t i = 0; i < newest.size(); ++i)
        units.push_back(unit(count - newest.size() + i, newest[i], Texts::previews));
    const JSON::Value fields = DiagnosticsRunContext::displaySnapshotFields(environment_.settings);
    displayed->append(
        JSON::Value{{"t", refresh.t},
                    {"event", "frame.publish"},
                    {"reason", refresh.reason},
                    {"sessionPhase", name(*view_->sessionPhase)},
                    {"configuredLayoutMode", fields["configuredLayoutMode"]},
                    {"effectiveLayoutMode", fields["effectiveLayoutMode"]},
                    {"publishedFrameIndex", refresh.result.publishedFrames - 1},
                    {"updateRequestIndex", refresh.result.updateRequests - 1},
                    {"sourceTailCount", count},
                    {"translationTailCount", refresh.display.frame->translationTail.size()},
                    {"committedCount", captions.committedSegments->size()},
                    {"liveLeadingCount", captions.liveLeadingSentences->size()},
                    {"softCaptionCount", captions.softCaptionSegments->size()},
                    {"currentPartialRevision", captions.currentPartial->revision},
                    {"sampledUnitLimit", sampledUnitLimit},
                    {"units", std::move(units)}});
}

} // namespace tessarune
