#include "Tessarune/diagnostics/CaptionUnitObservation.h"
#include "Tessarune/diagnostics/SessionDiagnosticsRecorder.h"
#include "Tessarune/diagnostics/SessionDiagnosticsRun.h"
#include "Tessarune/session/LiveCaptionCoreFactory.h"
#include "Tessarune/session/SessionView.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/SessionTranscriptBuilder.h"
#include "TessaruneCore/translation/TranslationPresentationBuilder.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace tessarune {

void SessionDiagnosticsRecorder::finish(const Finish& finish) {
    if (!run_ || !view_)
        return;
    const AppSettings& settings = environment_.settings;
    Ending ending{.finish = finish,
                  .segments = *view_->captions.committedSegments,
                  .wordEvents = view_->captions.wordEvents,
                  .config = LiveCaptionCoreFactory::config(settings),
                  .caps = LiveCaptionCoreFactory::capabilities(settings),
                  .smoothPaceMS = *settings.smoothPaceMS,
                  .finishedWall = environment_.host.wallClock(),
                  .finishedAt = environment_.host.now(),
                  .sourceTranscriptPath = {},
                  .bilingualTranscriptPath = {}};
    // If `finish` has no recording, for example because the catalog cannot be read, the recording
    // from `noteRecording` stays.
    if (finish.recording)
        run_->recording = finish.recording;
    if (const auto& recording = run_->recording) {
        ending.sourceTranscriptPath = environment_.catalog.transcriptURL(recording->id).string();
        ending.bilingualTranscriptPath =
            environment_.catalog.bilingualTranscriptURL(recording->id).string();
    }
    if (run_->sampler)
        run_->sampler->stop();
    if (run_->files.isFullRun())
        lastFinished_ = std::make_shared<FinishedRun>(run_->files.directory(), run_->recording);
    finished_ = std::exchange(run_, nullptr);
    write([this, run = finished_, ending = std::move(ending)] {
        Host& host = environment_.host;
        const auto report = [&](const char* event, const char* lifecycle) {
            const double elapsed = host.now() - ending.finishedAt;
            environment_.logger.event(
                event,
                {{"runID", run->id}, {"elapsedMS", static_cast<std::int64_t>(elapsed * 1000.0)}});
            if (lifecycle)
                run->writeLifecycle(host.now(), lifecycle);
        };
        const LogFields fields = ending.fields(*run);
        environment_.logger.event("diagnostics.finish.start", fields);
        run->writeLifecycle(
            {ending.finishedAt, "diagnostics.finish", LifecyclePhase::start, std::nullopt, fields});
        const bool isFull = run->files.isFullRun();
        JSON::Value lost;
        run->closeLogs(lost);
        if (isFull) {
            report("diagnostics.finish.writersClosed", nullptr);
            run->files.write("timeline", ending.timeline(*run));
            report("diagnostics.finish.timelineWritten", "diagnostics.finish.timeline");
            run->files.writeTranscripts(ending.finish.snapshot);
            run->files.writeJSON("perfSummary", ending.perfSummary(*run));
            report("diagnostics.finish.filesWritten", "diagnostics.finish.files");
        }
        run->manifest = ending.manifest(*run, lost);
        run->files.writeManifest(run->manifest);
        report("diagnostics.finish.manifestWritten", "diagnostics.finish.manifest");
        run->writeLifecycle({host.now(),
                             "diagnostics.finish",
                             LifecyclePhase::finish,
                             host.now() - ending.finishedAt,
                             {}});
        run->writeLifecycle(host.now(), "diagnostics.finish.done");
        TessaruneLog::diagnostics.notice([&] {
            return (isFull ? "Tessarune diagnostics saved: "
                           : "Tessarune core diagnostics saved: ") +
                   run->files.directory().string();
        });
        removeIfDeleted(run->recording, run->files.directory());
    });
    announce(finished_->files.directory());
}

void SessionDiagnosticsRecorder::recordLiveCaptionStopSnapshot(const StopSnapshot& stop) {
    if (!isFullDiagnosticsRunning() || !view_)
        return;
    using namespace CaptionUnitObservation;
    const double startedAt = environment_.host.now();
    const LiveCaptions& captions = view_->captions;
    const LiveCaptionDisplayFrame& frame = *view_->captionDisplay.frame;
    const CaptionSegment& partial = *captions.currentPartial;
    const auto rows = SessionTranscriptBuilder::visibleSourceSegments(
        {*captions.committedSegments, *captions.liveLeadingSentences, *captions.softCaptionSegments,
         partial},
        *view_->clearedSegmentIDs);
    JSON::Value units = JSON::Value::array();
    for (std::size_t i = 0; i < rows.size(); ++i)
        units.push_back(unit(i, rows[i], Texts::full));
    const std::size_t translationTail = frame.translationTail.size();
    const std::string source = SessionTranscriptBuilder::sourceText(rows);
    const std::string translation = SessionTranscriptBuilder::translationText(rows);
    const std::string bilingual = SessionTranscriptBuilder::bilingualText(rows);
    const auto pending = TranslationPresentationBuilder::pendingCount(*captions.committedSegments);
    const JSON::Value display = DiagnosticsRunContext::displaySnapshotFields(environment_.settings);
    JSON::Value snapshot;
    for (const char* key : {"configuredLayoutMode", "effectiveLayoutMode", "translationEnabled",
                            "translationBackend", "translationTargetLanguage", "swapCaptionOrder"})
        snapshot[key] = display.at(key);
    snapshot.update({{"schemaVersion", 1},
                     {"kind", "liveCaptionStopSnapshot"},
                     {"capturedAt", startedAt},
                     {"reason", stop.reason},
                     {"completedTranslations", stop.completedTranslations},
                     {"pendingTranslations", pending},
                     {"isCommittedTranslating", stop.isCommittedTranslating},
                     {"sessionPhase", name(*view_->sessionPhase)},
                     {"sourceTailCount", rows.size()},
                     {"translationTailCount", translationTail},
                     {"committedCount", captions.committedSegments->size()},
                     {"liveLeadingCount", captions.liveLeadingSentences->size()},
                     {"softCaptionCount", captions.softCaptionSegments->size()},
                     {"hasCurrentPartial", !Text::trimmed(partial.sourceText).empty()},
                     {"currentPartialID", partial.id.text()},
                     {"currentPartialRevision", partial.revision},
                     {"captionFrameUpdateRequests", view_->captionDisplay.perf.updateRequests},
                     {"captionFramePublishes", view_->captionDisplay.perf.publishedFrames},
                     {"statusMessage", view_->status->text()},
                     {"translationStatusText", frame.translationStatus.text},
                     {"translationStatusIncomplete", frame.translationStatus.hasIncomplete},
                     {"translationRetryAvailable", frame.translationStatus.canRetryIncomplete},
                     {"sourceText", source},
                     {"translationText", translation},
                     {"bilingualText", bilingual},
                     {"units", std::move(units)}});
    write([run = run_, snapshot = std::move(snapshot), source, bilingual, reason = stop.reason,
           &logger = environment_.logger] {
        const bool areWritten[] = {run->files.writeJSON("liveWindowStopSnapshot", snapshot),
                                   run->files.write("liveWindowStopSource", source),
                                   run->files.write("liveWindowStopBilingual", bilingual)};
        if (std::ranges::all_of(areWritten, std::identity()))
            logger.event("diagnostics.liveCaption.stopSnapshot.written",
                         {{"runID", run->id}, {"reason", reason}});
    });
    const double elapsed = environment_.host.now() - startedAt;
    const LogFields fields{
        {"reason", stop.reason},
        {"completedTranslations", stop.completedTranslations},
        {"pendingTranslations", static_cast<std::int64_t>(pending)},
        {"sourceTailCount", std::ssize(rows)},
        {"translationTailCount", static_cast<std::int64_t>(translationTail)},
        {"sourceCharacters", static_cast<std::int64_t>(Text::length(source))},
        {"translationCharacters", static_cast<std::int64_t>(Text::length(translation))},
        {"bilingualCharacters", static_cast<std::int64_t>(Text::length(bilingual))},
        {"elapsedMS", static_cast<std::int64_t>(elapsed * 1000.0)}};
    run_->writeLifecycle(startedAt, "stop.snapshot", fields);
    if (auto* log = this->log("liveCaptionEvents")) {
        LogFields record{{"t", startedAt}, {"event", "liveCaption.stopSnapshot"}};
        record.add(fields);
        log->append(record);
    }
}

} // namespace tessarune
