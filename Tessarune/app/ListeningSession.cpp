#include "Tessarune/app/ListeningSession.h"

#include "Tessarune/platform/media/SwresampleConverter.h"

#include <malloc.h>

#include <string>
#include <utility>

namespace tessarune {

namespace {

void forgetWhatIsLearned(OverridingUserDefaults& defaults) {
    using Key = PermissionsManager::Key;
    for (const Key key : {Key::systemAudioStatus, Key::speechStatus, Key::microphoneStatus})
        defaults.override(std::string(storageName(key)),
                          std::string(storageName(PermissionsManager::Status::unknown)));
}

} // namespace

ListeningSession::ListeningSession(Application& application, SoundServer& sound, Options options)
    : permissionDefaults_(application.defaults) {
    Host& host = application.host;
    if (options.forgetsPermissions)
        forgetWhatIsLearned(permissionDefaults_);
    permissions_ = std::make_unique<PermissionsManager>(host, sound, permissionDefaults_,
                                                        SystemAuthorization::ofServer(host, sound));
    auto recorder =
        AudioSessionRecorder::create(host, application.files, application.logger,
                                     application.catalog.forRecorder(), makeSwresampleConverter);
    SpeechPlatform speech = application.speechPlatform();
    engine_ = speech.engine;
    translation_ = LiveTranscriptTranslation::make(host, application.settings, application.logger,
                                                   application.translation);
    store_ = LiveTranscriptStore::make({.speech = std::move(speech),
                                        .sound = sound,
                                        .files = application.files,
                                        .settings = application.settings,
                                        .permissions = *permissions_,
                                        .catalog = application.catalog,
                                        .recorder = std::move(recorder),
                                        .compressor = application.compressor,
                                        .translation = translation_,
                                        .diagnostics = std::move(options.diagnostics),
                                        .scheduleHistoryRefinement = [](const auto&) {},
                                        .returnMemory = [] { malloc_trim(0); },
                                        .notifications = &application.notifications});
}

} // namespace tessarune
