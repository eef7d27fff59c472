#include "Tessarune/diagnostics/SessionDiagnosticsRun.h"

#include "Tessarune/diagnostics/ArenaTimelineExport.h"
#include "Tessarune/diagnostics/DiagnosticsRunLayout.h"
#include "TessaruneCore/text/Text.h"

#include <cmath>
#include <utility>

namespace tessarune {

namespace {

std::string stringify(const LogValue& value) {
    struct {
        std::string operator()(bool flag) const { return flag ? "true" : "false"; }
        std::string operator()(std::int64_t number) const { return std::to_string(number); }
        std::string operator()(double number) const {
            return std::isfinite(number) ? Text::shortest(number) : "unknown";
        }
        std::string operator()(const std::string& text) const { return text; }
        std::string operator()(const std::vector<std::string>& texts) const {
            return Text::joined(texts, ", ");
        }
    } asText;
    return std::visit(asText, value);
}

} // namespace

void SessionDiagnosticsRecorder::Run::writeLifecycle(const LifecycleEntry& entry) {
    Json fields = Json::object();
    for (const auto& [key, value] : entry.fields)
        fields[key] = stringify(value);
    Json record{{"t", entry.t},
                {"name", entry.name},
                {"phase", tessarune::name(entry.phase)},
                {"fields", std::move(fields)}};
    if (entry.elapsedSeconds)
        record["elapsedSeconds"] = *entry.elapsedSeconds;
    lifecycle->append(record);
}

void SessionDiagnosticsRecorder::Run::closeLogs(Json& lost) {
    lost = Json::object();
    for (const auto& [artifact, log] : logs) {
        log->close();
        if (log->lostRecords() > 0)
            lost[artifact] = log->lostRecords();
    }
    if (sampler)
        sampler->close(lost);
}

JSON::Value SessionDiagnosticsRecorder::Run::manifestHead() const {
    Json head = sections;
    head["kind"] =
        files.isFullRun() ? DiagnosticsRunLayout::fullKind : DiagnosticsRunLayout::coreKind;
    head["runID"] = id;
    head["runDirectory"] = files.directory().string();
    head["startedWall"] = startedWall;
    head["stop"] = DiagnosticsNDJSONWriter::object(stopRequestFields);
    if (!files.isFullRun()) {
        const Json all = head["recognition"];
        head["recognition"] = {
            {"optionID", all["optionID"]}, {"title", all["title"]}, {"engine", all["engine"]}};
        head.erase("display");
        head.erase("performance");
    }
    if (recording) {
        head["recordingID"] = recording->id.text();
        head["audioPath"] = recording->filePath;
        head["audioFile"] = std::filesystem::path(recording->filePath).filename().string();
    }
    return head;
}

std::size_t SessionDiagnosticsRecorder::Ending::wordEventCount() const {
    std::size_t count = 0;
    for (const auto& [id, events] : wordEvents)
        count += events.size();
    return count;
}

LogFields SessionDiagnosticsRecorder::Ending::fields(const Run& run) const {
    const auto characters = [](const std::string& text) {
        return static_cast<std::int64_t>(Text::length(text));
    };
    LogFields fields{{"runID", run.id},
                     {"committedSegments", std::ssize(segments)},
                     {"wordEvents", static_cast<std::int64_t>(wordEventCount())},
                     {"sourceChars", characters(finish.snapshot.sourceText)},
                     {"bilingualChars", characters(finish.snapshot.bilingualText)},
                     {"hasBilingual", !finish.snapshot.bilingualText.empty()}};
    if (run.recording)
        fields.add("recordingID", run.recording->id.text())
            .add("audioPath", run.recording->filePath);
    return fields;
}

std::optional<std::string> SessionDiagnosticsRecorder::Ending::timeline(const Run& run) const {
    using namespace ArenaTimelineExport;
    const auto& recording = run.recording;
    const std::filesystem::path audio(recording ? recording->filePath : "");
    return encode({.schemaVersion = 1,
                   .run = {.id = run.id,
                           .startedWall = run.startedWall,
                           .audioFile = audio.filename().string(),
                           .audioDurationSec = recording ? recording->duration : 0,
                           .importMode = "live",
                           .sampleRate = run.sampleRate},
                   .engines = {buildEngine(run.optionID, run.optionTitle, Caps(caps),
                                           Config(config, smoothPaceMS, false), segments,
                                           wordEvents, run.t0)},
                   .reference = {}});
}

JSON::Value SessionDiagnosticsRecorder::Ending::perfSummary(const Run& run) const {
    JSON::Value object{
        {"schemaVersion", DiagnosticsRunLayout::schemaVersion},
        {"concurrentEngines", 1},
        {"wallSeconds", finishedAt - run.t0},
        {"title", run.optionTitle},
        {"stats", finish.perfStats},
        {"engines",
         {{{"optionID", run.optionID}, {"title", run.optionTitle}, {"stats", finish.perfStats}}}}};
    for (const char* section : {"runMode", "productComparable", "resourceInterference", "runtime",
                                "recognition", "capture", "translation", "internalTools"})
        object[section] = run.sections.at(section);
    object["host"] = run.host;
    return DiagnosticsNDJSONWriter::sanitized(object);
}

JSON::Value SessionDiagnosticsRecorder::Ending::manifest(Run& run, const JSON::Value& lost) const {
    JSON::Value manifest = run.manifestHead();
    manifest["host"] = run.host;
    manifest["finishedWall"] = finishedWall;
    manifest["durationSeconds"] = finishedWall - run.startedWall;
    manifest["summary"] = DiagnosticsRunFiles::transcriptSummary(finish.snapshot);
    manifest["summary"]["committedSegmentCount"] = segments.size();
    const auto perf = DiagnosticsNDJSONWriter::sanitized(finish.perfStats);
    if (run.files.isFullRun()) {
        manifest["performance"]["sampleRate"] = run.sampleRate;
        manifest["enginePerf"] = perf;
        manifest["analysisCommandsDisabledReason"] =
            "internal tools disabled; release builds must not scan for the developer repository "
            "while stopping a live session";
        if (run.recording) {
            manifest["sourceTranscriptPath"] = sourceTranscriptPath;
            manifest["bilingualTranscriptPath"] = bilingualTranscriptPath;
        }
    } else {
        manifest["summary"]["sampleRate"] = run.sampleRate;
        manifest["summary"]["wordEventCount"] = wordEventCount();
        manifest["summary"]["enginePerf"] = perf;
        manifest["privacy"] = {{"containsTranscriptText", false},
                               {"containsASREvents", false},
                               {"containsAppleRawResults", false},
                               {"containsTimeline", false},
                               {"containsPerfSamples", false}};
    }
    manifest["lostRecords"] = lost;
    manifest["files"] = run.files.manifestFileEntries();
    return manifest;
}

} // namespace tessarune
