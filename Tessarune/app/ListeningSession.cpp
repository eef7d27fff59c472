#include "Tessarune/app/ListeningSession.h"

#include "Tessarune/diagnostics/SessionDiagnosticsRecorder.h"
#include "Tessarune/platform/media/SwresampleConverter.h"

#include <malloc.h>

#include <string>
#include <utility>

namespace tessarune {

namespace {

/// Seconds between two checks of whether the stop is complete.
constexpr double pollSeconds = 0.01;

std::shared_ptr<SessionDiagnostics> makeDiagnostics(Application& application,
                                                    ListeningSession::Options& options,
                                                    std::function<bool()> mayRecord) {
    const std::filesystem::path program = LinuxProcessFigures::executable();
    return std::make_shared<SessionDiagnosticsRecorder>(SessionDiagnosticsRecorder::Environment{
        .host = application.host,
        .files = application.files,
        .paths = application.paths,
        .settings = application.settings,
        .logger = application.logger,
        .catalog = application.catalog,
        .figures = application.figures,
        .notifications = &application.notifications,
        .app = {application.program, TESSARUNE_VERSION, program.parent_path(), program},
        .onASREvent = std::move(options.onASREvent),
        .mayRecord = std::move(mayRecord),
        .windows = std::move(options.windows)});
}

} // namespace

ListeningSession::ListeningSession(Application& application, SoundServer& sound, Options options)
    : application_(application),
      host_(application.host),
      permissionDefaults_(application.defaults) {
    Host& host = application.host;
    setForgetsPermissions(options.forgetsPermissions);
    permissions_ = std::make_unique<PermissionsManager>(host, sound, permissionDefaults_,
                                                        SystemAuthorization::ofServer(host, sound),
                                                        std::move(options.openSettings));
    permissions_->bootstrap();
    auto recorder =
        AudioSessionRecorder::create(host, application.files, application.logger,
                                     application.catalog.forRecorder(), makeSwresampleConverter);
    SpeechPlatform speech = application.speechPlatform();
    engine_ = speech.engine;
    translation_ = LiveTranscriptTranslation::make(host, application.settings, application.logger,
                                                   application.translation);
    const auto mayRecord = [&application, isRecorded = options.isRecorded] {
        return isRecorded && application.recording.mayRecord();
    };
    diagnostics_ = makeDiagnostics(application, options, mayRecord);
    auto scheduleRefinement = std::move(options.scheduleHistoryRefinement);
    if (!scheduleRefinement)
        scheduleRefinement = [&application](const auto& request) {
            application.refinement.schedule(request);
        };
    store_ = LiveTranscriptStore::make(
        {.speech = std::move(speech),
         .sound = sound,
         .files = application.files,
         .settings = application.settings,
         .permissions = *permissions_,
         .catalog = application.catalog,
         .recorder = std::move(recorder),
         .mayRecord = mayRecord,
         .leaseDataFolder = [&application] { return application.leaseDataFolder(); },
         .compressor = application.compressor,
         .translation = translation_,
         .diagnostics = diagnostics_,
         .scheduleHistoryRefinement = std::move(scheduleRefinement),
         .returnMemory = [] { malloc_trim(0); },
         .notifications = &application.notifications});
    phaseObserver_ = store_->view().sessionPhase.onDidChange([this](LiveSessionPhase phase) {
        application_.refinement.setPaused(this, phase != LiveSessionPhase::idle &&
                                                    phase != LiveSessionPhase::failed);
    });
}

ListeningSession::~ListeningSession() {
    store_->view().sessionPhase.remove(phaseObserver_);
    application_.refinement.setPaused(this, false);
}

void ListeningSession::setForgetsPermissions(bool forgets) {
    using Key = PermissionsManager::Key;
    for (const Key key : {Key::systemAudioStatus, Key::speechStatus, Key::microphoneStatus}) {
        if (forgets)
            permissionDefaults_.override(
                std::string(storageName(key)),
                std::string(storageName(PermissionsManager::Status::unknown)));
        else
            permissionDefaults_.endOverride(storageName(key));
    }
}

Task<bool> ListeningSession::listen(AudioSource source) {
    OneShot<bool> started(Executor::main(host_));
    const auto& phase = store_->view().sessionPhase;
    const auto token = phase.onDidChange([&started](LiveSessionPhase now) {
        if (now != LiveSessionPhase::preparing && now != LiveSessionPhase::loading)
            started.resume(now == LiveSessionPhase::listening);
    });
    store_->selectSource(source);
    store_->startListening(LiveSessionControlTrigger::programmatic());
    if (!*store_->view().isListening)
        started.resume(false); // the previous session is still being saved
    const bool isListening = co_await started;
    phase.remove(token);
    co_return isListening;
}

Task<void> ListeningSession::stop() {
    store_->stopListening(LiveSessionControlTrigger::programmatic());
    while (store_->isStopping())
        co_await sleep(Executor::main(host_), pollSeconds);
}

} // namespace tessarune
