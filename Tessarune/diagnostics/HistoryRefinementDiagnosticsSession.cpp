#include "Tessarune/diagnostics/HistoryRefinementDiagnosticsSession.h"

#include "Tessarune/diagnostics/DiagnosticsRunFiles.h"
#include "Tessarune/diagnostics/DiagnosticsRunLayout.h"
#include "TessaruneCore/text/JSON.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextHash.h"

#include <system_error>
#include <utility>

namespace tessarune {

namespace {

namespace Layout = DiagnosticsRunLayout;

constexpr const char* refineArtifacts[] = {"refineLifecycleEvents", "refineAppleSummary",
                                           "refineSegments", "refineTranslation"};

std::string_view nameOf(HistoryRefinementObserver::Translation::Event event) {
    using Event = HistoryRefinementObserver::Translation::Event;
    switch (event) {
    case Event::start:
        return "translation.start";
    case Event::success:
        return "translation.success";
    case Event::failure:
        return "translation.failure";
    }
    return {};
}

void addSpan(JSON::Value& record, std::optional<double> start, std::optional<double> end) {
    if (start)
        record["startSeconds"] = *start;
    if (end)
        record["endSeconds"] = *end;
    if (start && end)
        record["durationSeconds"] = *end - *start;
}

/// Adds the length, hash and preview of a text, under keys that begin with `prefix`.
void addText(JSON::Value& record, const std::string& prefix, const std::string& text) {
    record[prefix + "Characters"] = Text::length(text);
    record[prefix + "Hash"] = fnv1a64Hex(text);
    record[prefix + "Preview"] = recordTextPreview(text);
}

bool isFullRun(FileSystem& files, const std::filesystem::path& directory) {
    const JSON::Value manifest =
        JSON::parse(DiagnosticsRunFiles::readManifest(files, directory).value_or(""));
    return JSON::member<std::string>(manifest, "kind") == Layout::fullKind;
}

/// The content of a sidecar file; empty if there is none or it cannot be read.
std::string sidecar(FileSystem& files, const std::filesystem::path& path) {
    try {
        return files.exists(path) ? files.read(path) : std::string();
    } catch (const std::system_error&) {
        return {};
    }
}

} // namespace

struct HistoryRefinementDiagnosticsSession::Logs {
    Logs(const Environment& environment, const std::filesystem::path& directory)
        : lifecycle(environment.host, environment.files, path(directory, refineArtifacts[0]),
                    "Tessarune.HistoryRefinementDiagnostics.Lifecycle"),
          apple(environment.host, environment.files, path(directory, refineArtifacts[1]),
                "Tessarune.HistoryRefinementDiagnostics.Apple"),
          segments(environment.host, environment.files, path(directory, refineArtifacts[2]),
                   "Tessarune.HistoryRefinementDiagnostics.Segments"),
          translation(environment.host, environment.files, path(directory, refineArtifacts[3]),
                      "Tessarune.HistoryRefinementDiagnostics.Translation") {}

    static std::filesystem::path path(const std::filesystem::path& directory,
                                      const char* artifact) {
        return directory / Layout::artifact(artifact).path;
    }
    void close(JSON::Value& lost) {
        DiagnosticsNDJSONWriter* const all[] = {&lifecycle, &apple, &segments, &translation};
        for (std::size_t i = 0; i < std::size(all); ++i) {
            all[i]->close();
            if (all[i]->lostRecords() > 0)
                lost[refineArtifacts[i]] = all[i]->lostRecords();
        }
    }

    DiagnosticsNDJSONWriter lifecycle;
    DiagnosticsNDJSONWriter apple;
    DiagnosticsNDJSONWriter segments;
    DiagnosticsNDJSONWriter translation;
};

std::shared_ptr<HistoryRefinementDiagnosticsSession>
HistoryRefinementDiagnosticsSession::open(const Environment& environment,
                                          const HistoryRefinementRequest& request) {
    const auto run = environment.catalog.diagnosticsRunURL(request.recordingID);
    if (!run && !environment.catalog.wasDeleted(request.recordingID))
        environment.logger.event("history.refine.diagnostics.missingRun",
                                 {{"recordingID", request.recordingID.text()}});
    if (!run || !isFullRun(environment.files, *run))
        return nullptr;
    return std::shared_ptr<HistoryRefinementDiagnosticsSession>(
        new HistoryRefinementDiagnosticsSession(environment, request, *run));
}

HistoryRefinementDiagnosticsSession::HistoryRefinementDiagnosticsSession(
    const Environment& environment, const HistoryRefinementRequest& request,
    std::filesystem::path runDirectory)
    : environment_(environment),
      request_(request),
      runDirectory_(std::move(runDirectory)),
      logs_(std::make_shared<Logs>(environment, runDirectory_)) {
    updateManifest(Status::running);
}

HistoryRefinementDiagnosticsSession::~HistoryRefinementDiagnosticsSession() {
    close(Status::failed);
}

JSON::Value HistoryRefinementDiagnosticsSession::record(std::string_view event) const {
    return {{"schemaVersion", 1},
            {"event", event},
            {"recordingID", request_.recordingID.text()},
            {"audioPath", request_.audioPath},
            {"recognitionOptionID", request_.recognitionOptionID},
            {"localeIdentifier", request_.localeIdentifier}};
}

void HistoryRefinementDiagnosticsSession::lifecycle(const Lifecycle& entry) {
    if (!logs_)
        return;
    JSON::Value line = record(entry.name);
    line["phase"] = name(entry.phase);
    LogFields fields = entry.fields;
    if (entry.phase == LifecyclePhase::start) {
        try {
            fields.add("audioByteCount",
                       static_cast<std::int64_t>(environment_.files.size(request_.audioPath)));
        } catch (const std::system_error&) { // the next step will fail and report the reason
        }
    }
    if (entry.status)
        // "failed" would mean that the refinement failed; a failed translation is a "failure".
        line["status"] =
            entry.name == "history.refine.translation.failed" ? "failure" : name(*entry.status);
    if (entry.elapsedSeconds)
        line["elapsedSeconds"] = *entry.elapsedSeconds;
    if (const JSON::Value object = DiagnosticsNDJSONWriter::object(fields); !object.empty())
        line["fields"] = object;
    logs_->lifecycle.append(line);
}

void HistoryRefinementDiagnosticsSession::appleResult(
    const SpeechAnalyzerFileResultSummary& summary) {
    if (!logs_)
        return;
    ++counters_.appleResultCount;
    ++(summary.isFinal ? counters_.appleFinalCount : counters_.applePartialCount);
    const JSON::Ordered result = summary;
    JSON::Value line = record("apple.result");
    line.update(JSON::Value(result));
    logs_->apple.append(line);
}

void HistoryRefinementDiagnosticsSession::splitCandidate(
    const SpeechAnalyzerFileSplitObservation& observation) {
    if (!logs_)
        return;
    ++counters_.splitObservationCount;
    JSON::Value line = record("segment.splitCandidate");
    line.update({{"resultSequence", observation.resultSequence},
                 {"resultIsFinal", observation.resultIsFinal},
                 {"pieceIndex", observation.pieceIndex},
                 {"pieceCount", observation.pieceCount},
                 {"text", observation.text},
                 {"characterCount", observation.characterCount},
                 {"wordCount", observation.wordCount},
                 {"wordTimelineCount", observation.wordTimelineCount},
                 {"resultTextHash", observation.resultTextHash},
                 {"splitStrategy", observation.splitStrategy},
                 {"textHash", fnv1a64Hex(observation.text)},
                 {"textPreview", recordTextPreview(observation.text)}});
    addSpan(line, observation.startSeconds, observation.endSeconds);
    logs_->segments.append(line);
}

void HistoryRefinementDiagnosticsSession::finalSegment(
    std::int64_t index, const SpeechAnalyzerFileTranscriptionResult::Segment& segment) {
    if (!logs_)
        return;
    ++counters_.finalSegmentCount;
    JSON::Value line = record("segment.final");
    line.update({{"index", index},
                 {"characterCount", Text::length(segment.text)},
                 {"wordCount", Text::countOfWhiteSpaceSeparated(segment.text)},
                 {"wordTimelineCount", segment.words.size()},
                 {"textHash", fnv1a64Hex(segment.text)},
                 {"textPreview", recordTextPreview(segment.text)}});
    addSpan(line, segment.start, segment.end);
    logs_->segments.append(line);
}

void HistoryRefinementDiagnosticsSession::sourceSaved(std::int64_t segments,
                                                      const std::string& timelineKind) {
    if (!logs_)
        return;
    counters_.sourceSaved = true;
    JSON::Value line = record("history.refine.source.saved");
    line.update({{"phase", "fields"}, {"segments", segments}, {"timelineKind", timelineKind}});
    logs_->lifecycle.append(line);
}

void HistoryRefinementDiagnosticsSession::bilingualSaved(std::int64_t segments,
                                                         const std::string& target) {
    if (!logs_)
        return;
    counters_.bilingualSaved = true;
    JSON::Value line = record("history.refine.translation.saved");
    line.update({{"phase", "fields"}, {"segments", segments}, {"targetLanguage", target}});
    logs_->lifecycle.append(line);
}

void HistoryRefinementDiagnosticsSession::translation(const Translation& step) {
    using Event = Translation::Event;
    if (!logs_)
        return;
    JSON::Value line = record(nameOf(step.event));
    line.update({{"index", step.index},
                 {"sourceLanguage", step.sourceLanguage},
                 {"targetLanguage", step.targetLanguage},
                 {"sourceWords", Text::countOfWhiteSpaceSeparated(step.source)}});
    addText(line, "source", step.source);
    if (step.elapsedSeconds)
        line["elapsedSeconds"] = *step.elapsedSeconds;
    switch (step.event) {
    case Event::start:
        ++counters_.translationStartCount;
        break;
    case Event::success:
        ++counters_.translationSuccessCount;
        addText(line, "translated", step.translated);
        break;
    case Event::failure:
        ++counters_.translationFailureCount;
        line["error"] = step.error;
        break;
    }
    logs_->translation.append(line);
}

JSON::Value HistoryRefinementDiagnosticsSession::manifestEntry(Status status) const {
    return {{"schemaVersion", 1},
            {"status", name(status)},
            {"recordingID", request_.recordingID.text()},
            {"audioPath", request_.audioPath},
            {"recognitionOptionID", request_.recognitionOptionID},
            {"localeIdentifier", request_.localeIdentifier},
            {"counters",
             {{"appleResultCount", counters_.appleResultCount},
              {"appleFinalCount", counters_.appleFinalCount},
              {"applePartialCount", counters_.applePartialCount},
              {"splitObservationCount", counters_.splitObservationCount},
              {"finalSegmentCount", counters_.finalSegmentCount},
              {"translationStartCount", counters_.translationStartCount},
              {"translationSuccessCount", counters_.translationSuccessCount},
              {"translationFailureCount", counters_.translationFailureCount},
              {"sourceSaved", counters_.sourceSaved},
              {"bilingualSaved", counters_.bilingualSaved}}}};
}

void HistoryRefinementDiagnosticsSession::updateManifest(Status status) {
    environment_.queue->async([&disk = environment_.files, directory = runDirectory_,
                               entry = manifestEntry(status)]() mutable {
        DiagnosticsRunFiles run(disk, directory, {}, true);
        run.changeManifest([&](JSON::Value& manifest) {
            entry["files"] = JSON::Value::array();
            for (const char* artifact : refineArtifacts)
                entry["files"].push_back(run.manifestFileEntry(artifact));
            manifest["refinementDiagnostics"] = entry;
            run.refreshFileEntries(manifest, refineArtifacts);
        });
    });
}

void HistoryRefinementDiagnosticsSession::close(Status status) {
    if (!logs_)
        return;
    TranscriptSnapshot saved;
    if (counters_.sourceSaved) {
        FileSystem& disk = environment_.files;
        saved.sourceText = sidecar(disk, environment_.catalog.transcriptURL(request_.recordingID));
        saved.bilingualText =
            sidecar(disk, environment_.catalog.bilingualTranscriptURL(request_.recordingID));
    }
    environment_.queue->async([logs = std::exchange(logs_, nullptr), &disk = environment_.files,
                               directory = runDirectory_, saved = std::move(saved),
                               wall = environment_.host.wallClock()] {
        JSON::Value lost = JSON::Value::object();
        logs->close(lost);
        DiagnosticsRunFiles run(disk, directory, {}, true);
        // A run without a manifest was deleted with its recording. What the logs have left in its
        // folder is removed, too. If the manifest exists but cannot be read, the run stays.
        if (!disk.exists(directory / Layout::manifestFile)) {
            run.remove();
            return;
        }
        run.changeManifest([&](JSON::Value& manifest) { manifest["lostRecords"].update(lost); });
        if (!saved.sourceText.empty())
            DiagnosticsRunFiles::refreshManifestTranscriptSummary(disk, directory, saved, wall);
    });
    updateManifest(status);
}

} // namespace tessarune
