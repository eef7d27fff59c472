#include "Tessarune/ui/desktop/DesktopWelcome.h"

#include "Tessarune/platform/model-store/ProgramPlaces.h"

#include <utility>

namespace tessarune {

namespace {

constexpr const char* seenKey = "welcomeSeen";

} // namespace

bool DesktopWelcome::isDue(const Application& application) {
    return !application.storedDefaults.value(seenKey);
}

DesktopWelcome::DesktopWelcome(Application& application, const Published<bool>& reducesMotion,
                               const Published<std::string>& downloadTrouble,
                               std::function<void()> onClose)
    : application_(application),
      onClose_(std::move(onClose)),
      sound_(application.host),
      session_(application, sound_,
               ListeningSession::Options{.forgetsPermissions = true, .isRecorded = false}),
      sample_(sampleEnvironment(reducesMotion)),
      window_({.host = application.host,
               .settings = application.settings,
               .speech = application.speechModels,
               .languages = application.translationModels,
               .downloadTrouble = downloadTrouble,
               .playSample = [this] { return playSample(); },
               .close = [this] { close(); }},
              sample_) {
    try {
        sound_.playFile(ProgramPlaces::sampleSpeech());
    } catch (const std::exception& error) {
        sampleProblem_ = error.what();
    }
}

CaptionWindowEnvironment DesktopWelcome::sampleEnvironment(const Published<bool>& reducesMotion) {
    return {.host = application_.host,
            .settings = application_.settings,
            .session = session_.store().view(),
            .soundName = sound_.fileName,
            .notice = notice_,
            .store = application_.storedDefaults,
            .commands = {.retryTranslation = [] {}},
            .reducesMotion = reducesMotion};
}

Task<std::string> DesktopWelcome::playSample() {
    if (!sampleProblem_.empty())
        co_return sampleProblem_;
    Task<std::string> connecting = sound_.connectOrSay();
    std::string problem = co_await connecting;
    if (!problem.empty() || !onClose_)
        co_return problem;
    Task<bool> starting = session_.listen(AudioSource::systemAudio());
    const bool listens = co_await starting;
    if (!listens)
        problem = *session_.store().view().presentedError;
    co_return problem;
}

void DesktopWelcome::close() {
    const auto onClose = std::exchange(onClose_, {});
    if (!onClose)
        return;
    application_.storedDefaults.set(seenKey, true);
    window_.close();
    session_.store().stopListening(LiveSessionControlTrigger::programmatic());
    onClose();
}

/// Waits at least once, so that the handler of the page's own button can return.
///
/// A start that was stopped may still wait for the recogniser or the sound server, and resume after
/// the page is gone. This is safe because the source is system audio (the sample plays in its
/// place). System audio needs no permission, so the start waits inside the transcriber, and then
/// uses only objects that it keeps alive. With a microphone, the start could wait for the
/// permission, and would then use the permissions and the sound of the destroyed page.
Task<void> DesktopWelcome::ended() {
    constexpr double lookSeconds = 0.2;
    do
        co_await sleep(Executor::main(application_.host), lookSeconds);
    while (window_.isRunning() || session_.store().isStopping() || session_.isWritingDiagnostics());
}

} // namespace tessarune
