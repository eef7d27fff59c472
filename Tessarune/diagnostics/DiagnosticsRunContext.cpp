#include "Tessarune/diagnostics/DiagnosticsRunContext.h"

#include "Tessarune/session/SessionInactivityStop.h"
#include "Tessarune/shell/DiagnosticsNDJSONWriter.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/recognition/ModelCatalog.h"
#include "TessaruneCore/text/JSON.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/translation/TranslationPresentationBuilder.h"
#include "TessaruneCore/translation/TranslationSupport.h"

namespace tessarune::DiagnosticsRunContext {

namespace {

using Json = JSON::Value;

RecognitionOption selectedOption(const AppSettings& settings) {
    const auto option = ModelCatalog::recognitionOption(*settings.selectedRecognitionOptionID);
    return option ? *option : ModelCatalog::recognitionOptions().front();
}

bool translates(const AppSettings& settings) {
    return !TranslationSupport::isDisabledBackend(*settings.translationBackend);
}

std::string_view layoutName(SubtitleLayoutMode mode) {
    return mode == SubtitleLayoutMode::lyrics ? "lyrics" : "bilingualCompare";
}

/// The settings of these keys, with their stored values.
Json stored(const AppSettings& settings, std::initializer_list<const char*> keys) {
    Json object = Json::object();
    for (const char* key : keys) {
        if (const AnySetting* const setting = settings.find(key))
            std::visit([&](const auto& value) { object[key] = value; }, setting->storedValue());
    }
    return object;
}

} // namespace

Json appSnapshot(const App& app) {
    return {{"name", app.name},
            {"bundleIdentifier", TessaruneLog::subsystem},
            {"version", app.version},
            {"build", app.version},
            {"buildConfiguration", "release"},
            {"distribution", "apple-only"},
            {"liveCaptionRendering", "live"},
            {"speechAnalyzerLiveMaintenance", "enabled"},
            {"speechAnalyzerResults", "applied"},
            {"liveStorePublishing", "caption-frame"},
            {"internalToolsEnabled", false},
            {"bundlePath", app.bundlePath},
            {"executablePath", app.executablePath}};
}

Json hostSnapshot(ProcessFigures& figures) {
    Json object = DiagnosticsNDJSONWriter::object(figures.host());
    object["activeProcessorCount"] = figures.activeProcessorCount();
    object["thermalState"] = figures.thermalState();
    const auto lowPower = figures.lowPowerMode();
    object["lowPowerMode"] = lowPower ? Json(*lowPower) : Json("unknown");
    return object;
}

Json runtimeSnapshot() {
    return {{"recognition", "Apple SpeechAnalyzer"}};
}

Json recognitionSnapshot(const AppSettings& settings) {
    const RecognitionOption option = selectedOption(settings);
    const EngineCapabilities caps = option.capabilities();
    Json object = stored(settings, {"sentenceSegmentation", "clauseLevelSegmentation", "trueFreeze",
                                    "freezeStableSeconds", "duplicateCommitWindowSeconds",
                                    "appleAnalyzerEarlyFinalize", "appleAnalyzerHistoryRefinement",
                                    "appleAnalyzerDiagnosticsMode", "softCaptionEnabled",
                                    "softCaptionStableSeconds"});
    object.update({{"optionID", option.id},
                   {"title", option.title},
                   {"engine", "Apple SpeechAnalyzer"},
                   {"punctuatesNatively", caps.punctuatesNatively},
                   {"selfSegments", caps.selfSegments},
                   {"streamsWordByWord", caps.streamsWordByWord},
                   {"providesWordTimestamps", caps.providesWordTimestamps},
                   {"isOnline", caps.isOnline},
                   {"boundaryUnit", diagnosticLabel(caps.boundaryUnit)},
                   {"maxUnpunctuatedUnits", caps.maxUnpunctuatedUnits},
                   {"hardClauseLevelSegmentation", false},
                   {"softClauseLevelSegmentation", *settings.clauseLevelSegmentation}});
    return object;
}

Json translationSnapshot(const AppSettings& settings) {
    const std::string& backend = *settings.translationBackend;
    const std::string& target = *settings.translationTargetLanguage;
    return {{"backend", backend},
            {"targetLanguage", target},
            {"softTranslationEnabled", *settings.softTranslationEnabled},
            {"defaultSourceLanguage", TranslationSupport::defaultSourceLanguage},
            {"sameLanguagePassthrough", TranslationSupport::isSameLanguageTarget(target)},
            {"appleOfflineSupported", TranslationSupport::appleOfflineSupported},
            {"backendRunnable", TranslationPresentationBuilder::backendCanRun(backend, target)},
            {"drainTimeoutSeconds", *settings.translationDrainTimeoutSeconds}};
}

Json audioSourceSnapshot(const AudioSource& source, const std::string& name) {
    const bool isDefaultInput = source.isMicrophone() && !source.deviceID();
    Json object{{"kind", source.isMicrophone() ? "microphone" : "systemAudio"},
                {"displayName", isDefaultInput ? localized("系统默认麦克风") : name},
                {"usesSystemAudio", source.isSystemAudio()},
                {"usesMicrophoneSource", source.isMicrophone()}};
    if (source.deviceID())
        object["deviceID"] = *source.deviceID();
    return object;
}

Json captureSnapshot(const AppSettings& settings, const AudioSource& source,
                     const std::string& sourceName,
                     const LiveAudioInactivityAutoStopConfiguration& autoStop) {
    Json object = stored(
        settings, {"recordWhileCaptioning", "recordLosslessAudio", "sessionDiagnosticsEnabled"});
    const Json audioSource = audioSourceSnapshot(source, sourceName);
    object.update(
        {{"audioInactivityAutoStopEnabled", autoStop.timeoutSeconds.has_value()},
         {"audioInactivityAutoStopMinutes", autoStop.minutes},
         {"audioInactivityAutoStopSeconds", autoStop.timeoutSeconds.value_or(0)},
         {"audioInactivityActiveLevelThreshold", SessionInactivityStop::activeLevelThreshold},
         {"audioSource", audioSource},
         {"audioSourceKind", audioSource["kind"]},
         {"audioSourceName", audioSource["displayName"]}});
    return object;
}

Json internalToolsSnapshot() {
    return {
        {"enabled", false},      {"buildConfiguration", "release"}, {"defaultEnabled", false},
        {"showOnLaunch", false}, {"debugWindowVisible", false},     {"arenaWindowVisible", false}};
}

Json displaySnapshot(const AppSettings& settings) {
    Json object =
        stored(settings,
               {"smoothStreaming", "smoothPaceMS", "subtitleLayoutMode", "subtitleLyricsLayout",
                "swapCaptionOrder", "sourceFontSize", "translationFontSize", "sourceFontColorHex",
                "translationFontColorHex", "bgColorHex", "bgOpacity", "highlightChanges"});
    object["liveSubtitleWindowMaxSegments"] = liveSubtitleWindowMaxSegments;
    return object;
}

Json displaySnapshotFields(const AppSettings& settings) {
    Json object =
        stored(settings,
               {"translationBackend", "translationTargetLanguage", "swapCaptionOrder",
                "smoothStreaming", "smoothPaceMS", "sourceFontSize", "translationFontSize",
                "bgOpacity", "highlightChanges", "softCaptionEnabled", "softCaptionStableSeconds"});
    object.update({{"configuredLayoutMode", layoutName(*settings.subtitleLayoutMode)},
                   {"effectiveLayoutMode",
                    layoutName(settings.effectiveSubtitleLayoutMode(translates(settings)))},
                   {"translationEnabled", translates(settings)},
                   {"liveSubtitleWindowMaxSegments", liveSubtitleWindowMaxSegments}});
    return object;
}

Json settingsFile(const AppSettings& settings, const Json& sections, bool capturesFullDiagnostics) {
    constexpr int logSchemaVersion = 1;
    Json object = stored(
        settings, {"selectedRecognitionOptionID", "translationBackend", "translationTargetLanguage",
                   "softTranslationEnabled", "softCaptionEnabled", "softCaptionStableSeconds",
                   "sentenceSegmentation", "clauseLevelSegmentation", "trueFreeze",
                   "freezeStableSeconds", "duplicateCommitWindowSeconds",
                   "appleAnalyzerEarlyFinalize", "appleAnalyzerHistoryRefinement",
                   "appleAnalyzerDiagnosticsMode", "diagnosticsLevel", "perfSampleIntervalSeconds",
                   "recordWhileCaptioning", "recordLosslessAudio", "sessionDiagnosticsEnabled"});
    object.update(displaySnapshot(settings));
    for (const char* name :
         {"runtime", "recognition", "capture", "translation", "display", "internalTools",
          "productComparable", "resourceInterference", "runMode", "diagnosticsSchemaVersion"})
        object[name] = sections.at(name);
    object["selectedRecognitionTitle"] = sections.at("recognition").at("title");
    object["hardClauseLevelSegmentation"] = false;
    object["softClauseLevelSegmentation"] = *settings.clauseLevelSegmentation;
    object["capturesFullDiagnostics"] = capturesFullDiagnostics;
    object["liveCaptionDiagnostics"] = {
        {"schemaVersion", logSchemaVersion},
        {"eventFile", "events/live_caption.ndjson"},
        {"frameRefreshSampling",
         "all critical reasons; high-frequency asr.partial/core.activity frame <= 3 or every 12th "
         "published frame"},
        {"principle", "raw display facts only; expensive attribution happens offline"}};
    object["displayUnitDiagnostics"] = {
        {"schemaVersion", logSchemaVersion},
        {"eventFile", "events/display_units.ndjson"},
        {"sampledTailUnits", 8},
        {"framePublishSampling",
         "all critical reasons; high-frequency asr.partial/core.activity frame <= 3 or every 12th "
         "published frame"},
        {"translationUnitFields",
         {"translationUnitID", "translationResultSegmentID", "translationUnitIndex",
          "translationUnitCount", "translationRole"}},
        {"principle", "published display-frame tail samples with text hashes/previews; full "
                      "reconstruction uses timeline + ASR events offline"}};
    object["appleStreamDiagnostics"] = {
        {"mode", name(*settings.appleAnalyzerDiagnosticsMode)},
        {"summaryFile", "events/apple_summary.ndjson"},
        {"rawFile", "events/apple_raw.ndjson"},
        {"principle", "summary is the default long-run signal; full raw is opt-in because it "
                      "expands large Apple result payloads."}};
    return object;
}

} // namespace tessarune::DiagnosticsRunContext
