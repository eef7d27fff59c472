#include "Tessarune/app/Application.h"

#include "Tessarune/app/TessaruneStartupServices.h"
#include "Tessarune/diagnostics/DiagnosticsCatalog.h"
#include "Tessarune/diagnostics/HistoryRefinementDiagnosticsSession.h"
#include "Tessarune/platform/host/HostFacts.h"
#include "Tessarune/platform/host/ProcessMemory.h"
#include "Tessarune/platform/language-detector/DetectedLanguage.h"
#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/media/M4ATranscoder.h"
#include "Tessarune/platform/media/SwresampleConverter.h"
#include "Tessarune/platform/model-store/ProgramPlaces.h"
#include "Tessarune/platform/pdf-program/PDFProgram.h"
#include "Tessarune/platform/speech-engine/SpeechEngineFactory.h"
#include "Tessarune/platform/speech-engine/SpeechModels.h"
#include "Tessarune/platform/sqlite/SQLiteSearchIndex.h"
#include "Tessarune/platform/wordnet/WordNetLexicon.h"
#include "Tessarune/shell/StringTables.h"
#include "Tessarune/translation/AppleTranslator.h"
#include "Tessarune/vocabulary/VocabularyStore.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Localization.h"

#include <malloc.h>

#include <cmath>
#include <system_error>
#include <utility>

namespace tessarune {

Application::Application(Host& itsHost, std::string itsProgram)
    : host(itsHost),
      program(std::move(itsProgram)),
      storedDefaults(files, TessarunePaths::settingsFile()),
      defaults(storedDefaults),
      settings(defaults),
      recording(settings, storedDefaults, paths, program),
      speechModelChoice(settings.speechModel),
      downloadMirror(settings.modelMirror),
      logger(host, files, paths),
      models(files, paths.models(), ProgramPlaces::modelFolders()),
      installer(host, models, downloadPolicy()),
      speechModels(models, installer, [this] { return *settings.speechModel; }),
      translationModels(host, models, installer),
      translation(std::make_shared<OfflineTranslationService>(host, models, translationModels)),
      catalog(host, files, paths, logger, notifications),
      exporter(host, transcodeToM4A),
      historyExport(host, catalog, files, exporter, PDFProgram::pdf),
      compressor(host, files, catalog, logger, exporter, openFFmpegMediaFile, createM4A),
      wordStats(host, logger, std::make_shared<WordNetLexicon>(), detectedLanguage),
      search(host, files, catalog, logger, notifications, openSQLiteSearchIndex),
      refinement(refinementEnvironment()),
      imports({host, files, catalog, logger, notifications, settings, refinement,
               openFFmpegMediaFile, [this] { return speechModelProblem().empty(); }}),
      speechAssets_(host, speechModels, logger),
      preheater_(speechAssets_, [this] { return *settings.selectedRecognitionOptionID; }) {
    ProcessMemory::returnLargeBlocks();
    setLocalizationTable(StringTables::forLocale(StringTables::userLocale()));
    TessaruneLog::setDiagnosticsLevel(*settings.diagnosticsLevel);
    settings.speechModelNames = [this] {
        std::vector<std::string> names{std::string(SpeechModels::automatic)};
        for (const auto& model : speechModels.list())
            names.push_back(model.name);
        return names;
    };
    levelObserver_ =
        settings.diagnosticsLevel.published().onDidChange(TessaruneLog::setDiagnosticsLevel);
    storedDefaults.watch(host);
}

Application::~Application() {
    settings.diagnosticsLevel.published().remove(levelObserver_);
}

DownloadPolicy Application::downloadPolicy() {
    DownloadPolicy policy = DownloadPolicy::withMirror(downloadMirror.reader());
    policy.onTrouble = [this](const DownloadTrouble& trouble) {
        host.post([this, trouble] {
            if (onDownloadTrouble)
                onDownloadTrouble(trouble);
        });
    };
    return policy;
}

HistoryRefinementService::Environment Application::refinementEnvironment() {
    return {.host = host,
            .files = files,
            .catalog = catalog,
            .logger = logger,
            .engine = [this] { return speechPlatform().engine; },
            .openMedia = openFFmpegMediaFile,
            .makeConverter = makeSwresampleConverter,
            .makeTranslator =
                [this] {
                    return std::make_shared<AppleTranslator>(
                        host, translation, Executor::main(host), AppleTranslator::Downloads::never);
                },
            .observe = [this](const HistoryRefinementRequest& request)
                -> std::shared_ptr<HistoryRefinementObserver> {
                return HistoryRefinementDiagnosticsSession::open(
                    {host, files, catalog, logger, utilityQueue()}, request);
            },
            .returnMemory = [] { malloc_trim(0); },
            .leaseDataFolder = [this] { return leaseDataFolder(); }};
}

DataFolderLease Application::leaseDataFolder() {
    try {
        const auto held = recording.holdDataFolder();
        if (const auto* hold = std::get_if<DataFolderHold>(&held))
            return {*hold, {}};
        const auto& holder = std::get<DataFolderLock::Holder>(held);
        return {nullptr,
                localized("%@正在使用这些录音。请稍后再试，或在那里修改。", {holder.text()})};
    } catch (const std::system_error& error) {
        return {nullptr, error.what()};
    }
}

SpeechPlatform Application::speechPlatform() {
    return {host, makeSpeechEngine(host, models, speechModelChoice.reader()), speechModels,
            makeSwresampleConverter, logger};
}

std::string Application::speechModelProblem() const {
    const std::string wanted = *settings.speechModel;
    const bool isAutomatic = wanted == SpeechModels::automatic;
    std::string problem = isAutomatic
                              ? localized("There is no speech model on this computer.")
                              : localized("The speech model %@ is not on this computer.", {wanted});
    for (const SpeechModelState& model : speechModels.list()) {
        if (!model.isInstalled || (!isAutomatic && model.name != wanted))
            continue;
        if (model.damage.empty())
            return {};
        problem = model.damage;
    }
    return problem;
}

void Application::override(AnySetting& setting, SettingValue value) {
    defaults.override(std::string(setting.key()), std::move(value));
    setting.reload();
}

void Application::endOverride(AnySetting& setting) {
    defaults.endOverride(setting.key());
    setting.reload();
}

std::filesystem::path Application::renewSettingsFile() {
    std::filesystem::path aside = storedDefaults.keepAside();
    if (!aside.empty())
        settings.recordWhileCaptioning = false;
    return aside;
}

std::string Application::Preparation::rebuiltIndexText() const {
    if (!repairs.rebuiltIndex || repairs.rebuiltIndex->keptAside.empty())
        return {};
    return localized("The list of recordings could not be read. It was rebuilt (recordings found: "
                     "%lld); the old list was kept as %@.",
                     {std::to_string(repairs.rebuiltIndex->recordings),
                      repairs.rebuiltIndex->keptAside.filename().string()});
}

std::string Application::Preparation::removedText() const {
    return repairs.removedWithoutSound == 0
               ? std::string()
               : localized("Recordings removed because their sound files are missing: %lld.",
                           {std::to_string(repairs.removedWithoutSound)});
}

Application::Preparation Application::prepareToRecord() {
    Preparation preparation;
    const bool records = recording.recordsSessions();
    // Repairs after a crash do not depend on the settings.
    if (records || files.exists(paths.recordings())) {
        try {
            preparation.obstacle.holder = recording.takeDataFolder();
        } catch (const std::system_error& error) {
            preparation.obstacle.failure = error.what();
        }
    }
    if (!records)
        preparation.obstacle = {.doubt = recording.doubt()};
    if (!preparation.obstacle.holder)
        preparation.repairs = prepare();
    if (!records)
        recording.leaveDataFolder(); // another program can now take it and record
    return preparation;
}

RecordingRepair::Report Application::prepare() {
    for (const auto& file :
         {paths.appSupportBase() / VocabularyStore::fileName, TessarunePaths::settingsFile()})
        PosixFileSystem::removeUnfinished(file.parent_path(), [&](std::string_view name) {
            const std::string own = file.filename().string();
            return name == own || name == own + ".next"; // replaces an unreadable file
        });
    PosixFileSystem::removeUnfinished(paths.logs(), TessaruneFileLogger::isLogFile);
    RecordingRepair repair(files, catalog, logger);
    // Nothing is pruned unless this program holds the data folder: a run that another program is
    // still writing may look like the oldest one.
    const bool isOurs = recording.hasDataFolder();
    RecordingRepair::Report report = TessaruneStartupServices::prepare(
        {logger, bootstrapFields(), isOurs ? &repair : nullptr,
         isOurs ? std::function([this] { pruneDiagnosticsOnLaunch(leaseDataFolder().hold); })
                : nullptr,
         [this] { preheatRecogniser(); }});
    if (isOurs && recording.recordsSessions() && !*settings.recordLosslessAudio)
        compressor.compressLeftovers(leaseDataFolder().hold);
    if (isOurs)
        spawn(Executor::main(host), search.eraseTraces());
    return report;
}

void Application::preheatRecogniser() {
    if (speechModelProblem().empty())
        preheater_.preheatSelectedOptionIfNeeded();
}

const std::shared_ptr<SerialQueue>& Application::utilityQueue() {
    if (!utilityQueue_)
        utilityQueue_ = host.serialQueue("Tessarune.Application.utility", QueuePriority::utility);
    return utilityQueue_;
}

void Application::pruneDiagnosticsOnLaunch(DataFolderHold hold) {
    utilityQueue()->async([this, hold = std::move(hold)] {
        constexpr double bytesPerMB = 1048576;
        constexpr std::int64_t bytesPerGB = 1073741824;
        constexpr DiagnosticsCatalog::Budget budget;
        const auto pruned = DiagnosticsCatalog(files, paths).pruneRuns(budget);
        if (pruned.prunedRuns == 0)
            return;
        const double freedMB = static_cast<double>(pruned.freedBytes) / bytesPerMB;
        logger.important("diagnostics.prune",
                         {{"prunedRuns", static_cast<std::int64_t>(pruned.prunedRuns)},
                          {"freedMB", std::round(freedMB * 10) / 10},
                          {"maxRuns", static_cast<std::int64_t>(budget.maxRuns)},
                          {"maxTotalGB", budget.maxTotalBytes / bytesPerGB}});
    });
}

LogFields Application::bootstrapFields() const {
    const HostFacts facts = HostFacts::current();
    return {{"version", TESSARUNE_VERSION},
            {"build", TESSARUNE_VERSION},
            {"bundleID", std::string(TessaruneLog::subsystem)},
            {"buildConfiguration", "release"},
            {"internalToolsEnabled", false},
            {"diagnosticsLevel", std::string(storageName(*settings.diagnosticsLevel))},
            {"physicalMemoryGB", facts.physicalMemoryGB},
            {"activeProcessorCount", std::int64_t{facts.activeProcessorCount}},
            {"baseDirectory", paths.appSupportBase().string()},
            {"host", facts.system},
            {"runtime", program}};
}

} // namespace tessarune
