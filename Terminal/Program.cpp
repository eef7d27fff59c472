#include "Terminal/Program.h"

#include "Terminal/CaptionsRun.h"
#include "Terminal/HistoryCommands.h"
#include "Terminal/LanguageCommands.h"
#include "Terminal/ModelCommands.h"
#include "Terminal/SettingsCommands.h"
#include "Terminal/SourcesCommand.h"
#include "Tessarune/platform/host/HostFacts.h"
#include "Tessarune/platform/host/ProcessMemory.h"
#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/media/M4ATranscoder.h"
#include "Tessarune/platform/media/SwresampleConverter.h"
#include "Tessarune/platform/model-store/ProgramPlaces.h"
#include "Tessarune/platform/speech-engine/SpeechEngineFactory.h"
#include "Tessarune/shell/StringTables.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/Localization.h"

#include <utility>

namespace tessarune {

Program::Program()
    : storedDefaults(files, TessarunePaths::settingsFile()),
      defaults(storedDefaults),
      settings(defaults),
      logger(host, files, paths),
      models(files, paths.models(), ProgramPlaces::modelFolders()),
      installer(host, models, DownloadPolicy::withMirror(*settings.modelMirror)),
      speechModels(models, installer, [this] { return *settings.speechModel; }),
      translationModels(host, models, installer),
      translation(std::make_shared<OfflineTranslationService>(host, models, translationModels)),
      catalog(host, files, paths, logger, notifications),
      exporter(host, transcodeToM4A),
      compressor(files, catalog, logger, exporter, openFFmpegMediaFile) {
    ProcessMemory::returnLargeBlocks();
    setLocalizationTable(StringTables::forLocale(StringTables::userLocale()));
    TessaruneLog::setDiagnosticsLevel(*settings.diagnosticsLevel);
}

SpeechPlatform Program::speechPlatform() {
    // The engine asks for the choice on a thread of its own, where the settings may not be read.
    auto choice = [name = *settings.speechModel] { return name; };
    return {host, makeSpeechEngine(host, models, std::move(choice)), speechModels,
            makeSwresampleConverter, logger};
}

LogFields Program::bootstrapFields() const {
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
            {"runtime", "terminal"}};
}

void Program::override(AnySetting& setting, SettingValue value) {
    defaults.override(std::string(setting.key()), std::move(value));
    setting.reload();
}

namespace {

/// A command's task brought to an end of the main loop.
Task<void> runThenQuit(Program& program, Task<int> task) {
    const int status = co_await task;
    program.host.quit(status);
}

struct Dispatch {
    Program& program;
    const TerminalOptions& options;

    Task<int> operator()(const CaptionsCommand& command) const {
        return runCaptions(program, options, command);
    }
    Task<int> operator()(const ListSourcesCommand&) const { return listSources(program, options); }
    Task<int> operator()(const ListModelsCommand&) const { return listModels(program, options); }
    Task<int> operator()(const InstallModelCommand& command) const {
        return installModel(program, options, command.name);
    }
    Task<int> operator()(const RemoveModelCommand& command) const {
        return removeModel(program, command.name);
    }
    Task<int> operator()(const ListLanguagesCommand&) const {
        return listLanguages(program, options);
    }
    Task<int> operator()(const DownloadLanguageCommand& command) const {
        return downloadLanguage(program, options, command.id);
    }
    Task<int> operator()(const RemoveLanguageCommand& command) const {
        return removeLanguage(program, command.id);
    }
    Task<int> operator()(const TestTranslationCommand& command) const {
        return testTranslation(program, options, command.target);
    }
    Task<int> operator()(const ListRecordingsCommand&) const {
        return listRecordings(program, options);
    }
    Task<int> operator()(const ShowRecordingCommand& command) const {
        return showRecording(program, options, command.id);
    }
    Task<int> operator()(const ShowSettingsCommand&) const {
        return showSettings(program, options);
    }
    Task<int> operator()(const SetCommand& command) const {
        return changeSettings(program, command);
    }
};

} // namespace

int run(Program& program, const TerminalOptions& options) {
    Task<int> task = std::visit(Dispatch{program, options}, options.command);
    spawn(Executor::main(program.host), runThenQuit(program, std::move(task)));
    return program.host.run();
}

} // namespace tessarune
