#include "Terminal/CaptionSound.h"

#include "Terminal/RunFailure.h"
#include "Tessarune/audio/AudioInputDevices.h"
#include "Tessarune/platform/file-sound/FileSoundServer.h"
#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/media/SwresampleConverter.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"

#include <utility>

namespace tessarune {

namespace {

/// The maximum lead of a fast file over the recogniser, in seconds of sound.
constexpr double fastLead = 5.0;
/// Seconds for the recogniser to finish the last sentence after the sample speech has ended.
constexpr double afterDemoSeconds = 2.0;
/// Seconds after which the user is told that the program waits for sound. A pipe, for example,
/// opens only when another program opens it for writing.
constexpr double silentWaitSeconds = 1.0;

Task<void> reportWaiting(Host& host, std::function<void(const std::string&)> say, std::string text,
                         std::stop_token opened) {
    Task<bool> waiting = sleep(Executor::main(host), silentWaitSeconds, opened);
    const bool isWaiting = co_await waiting;
    if (isWaiting)
        say(text);
}

} // namespace

Task<void> CaptionSound::open(CaptionsCommand command) {
    if (const auto* file = std::get_if<FileSource>(&command.source)) {
        useFile(*file);
    } else {
        source_ = std::get<AudioSource>(command.source);
        server_ = std::make_unique<PulseSoundServer>();
    }
    Task<void> connecting = connect(!command.sourceWasChosen);
    co_await connecting;
    if (source_.isMicrophone())
        source_ = microphone(source_);
}

void CaptionSound::giveUp() {
    if (giveUp_)
        giveUp_();
}

void CaptionSound::useFile(const FileSource& file) {
    file_ = file.path;
    isFast_ = file.fast;
    auto pace = file.fast ? FileSoundServer::Pace::following(handlers_.processedSeconds, fastLead)
                          : FileSoundServer::Pace::realTime();
    const FileSoundServer::Media media{openAwaitedFFmpegMediaFile, makeSwresampleConverter};
    auto server = std::make_unique<FileSoundServer>(host_, media, file.path, std::move(pace),
                                                    handlers_.onFinished);
    giveUp_ = [&file = *server] { file.giveUp(); };
    server_ = std::move(server);
}

Task<void> CaptionSound::connect(bool mayShowDemo) {
    std::string refused;
    std::stop_source opened;
    if (file_)
        spawn(Executor::main(host_),
              reportWaiting(
                  host_, handlers_.say,
                  localized("Waiting for sound from %@. Press Ctrl-C to end.", {fileName()}),
                  opened.get_token()));
    try {
        Task<void> connecting = server_->connect(Executor::main(host_));
        co_await connecting;
        opened.request_stop();
    } catch (const MediaFileError& error) {
        opened.request_stop();
        throw RunFailure(ExitStatus::unreadableFile, error.what());
    } catch (const SoundServerError& error) {
        refused = error.what();
    }
    if (const auto* file = dynamic_cast<FileSoundServer*>(server_.get()); file && isFast_)
        fastDuration_ = file->duration();
    if (refused.empty())
        co_return;
    if (!mayShowDemo)
        throw RunFailure(ExitStatus::noSoundServer, localized("no sound server: %@", {refused}));
    Task<void> startingDemo = useDemo(std::move(refused));
    co_await startingDemo;
}

Task<void> CaptionSound::useDemo(std::string why) {
    handlers_.say(localized("No sound server: %@.", {why}));
    handlers_.say(localized("To show how it works, the program starts a sound server of its own "
                            "and captions sample speech. Nothing is recorded."));
    try {
        demo_ = std::make_unique<DemoSound>(host_);
        Task<void> connecting = demo_->server().connect(Executor::main(host_));
        co_await connecting;
    } catch (const std::exception& error) {
        throw RunFailure(
            ExitStatus::noSoundServer,
            localized("there is no sound server (%@), and a private one could not be started: %@",
                      {why, error.what()}));
    }
}

/// Finds the wanted microphone by its id on the sound server or by its display name; the default
/// microphone needs no id. Throws RunFailure if the microphone does not exist.
AudioSource CaptionSound::microphone(const AudioSource& wanted) {
    const auto devices = AudioInputDevices::inputDevices(server());
    if (devices.empty())
        throw RunFailure(ExitStatus::noSuchSource, localized("there is no microphone"));
    if (!wanted.deviceID())
        return wanted;
    for (const auto& device : devices) {
        if (device.id == *wanted.deviceID() || Text::equal(device.name, *wanted.deviceID()))
            return AudioSource::microphone(device.id);
    }
    std::string text = localized("there is no microphone '%@'; there are:", {*wanted.deviceID()});
    for (const auto& device : devices)
        text += "\n  mic:" + device.id + "  (" + device.name + ")";
    throw RunFailure(ExitStatus::noSuchSource, text);
}

std::string CaptionSound::fileName() const {
    return *file_ == FileSource::standardInput ? localized("standard input")
                                               : Text::printableLine(file_->filename().string());
}

std::string CaptionSound::description() const {
    if (file_)
        return localized("Captions of %@. Press Ctrl-C to end.", {fileName()});
    if (source_.isSystemAudio())
        return localized("Listening to what this computer plays. Press Ctrl-C to end.");
    return localized(
        "Listening to %@. Press Ctrl-C to end.",
        {AudioSourceDisplayName::name(source_, AudioInputDevices::inputDevices(server()))});
}

void CaptionSound::begin() {
    if (demo_)
        spawn(Executor::main(host_), playDemo());
}

Task<void> CaptionSound::playDemo() {
    std::exception_ptr failure;
    try {
        Task<void> playing = demo_->play();
        co_await playing;
        Task<bool> waiting = sleep(Executor::main(host_), afterDemoSeconds);
        co_await waiting;
    } catch (...) {
        failure = std::current_exception();
    }
    handlers_.onFinished(failure);
}

} // namespace tessarune
