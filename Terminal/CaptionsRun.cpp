#include "Terminal/CaptionsRun.h"

#include "Terminal/CaptionOutput.h"
#include "Terminal/DemoSound.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/LiveCaptions.h"
#include "Terminal/SignalWatch.h"
#include "Tessarune/audio/AudioInputDevices.h"
#include "Tessarune/platform/file-sound/FileSoundServer.h"
#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/media/SwresampleConverter.h"
#include "Tessarune/platform/pulse/PulseSoundServer.h"
#include "TessaruneCore/text/Text.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace tessarune {

namespace {

/// What a fast file may be ahead of the recogniser, in seconds of sound.
constexpr double fastLead = 5.0;
/// After the sample the last sentence still has to come out of the recogniser.
constexpr double afterDemoSeconds = 2.0;

/// A failure with the status that the program ends with.
struct RunFailure : std::runtime_error {
    RunFailure(ExitStatus how, const std::string& text) : std::runtime_error(text), status(how) {}
    ExitStatus status;
};

/// Everything of one run, in one place that outlives all its callbacks.
struct Run {
    Run(Program& owner, const TerminalOptions& asked)
        : program(owner), options(asked), ended(Executor::main(owner.host)) {}

    Program& program;
    const TerminalOptions& options;
    OneShot<std::string> ended; ///< empty for a good end, else what went wrong
    CaptionOutput output;
    std::unique_ptr<SoundServer> server;
    std::unique_ptr<DemoSound> demo;
    std::shared_ptr<LiveCaptions> captions;
    AudioSource source = AudioSource::systemAudio();

    SoundServer& sound() { return demo ? demo->server() : *server; }
    Executor main() { return Executor::main(program.host); }
    void say(const std::string& text) {
        if (output.status)
            output.status(text);
    }
};

CaptionOutput makeOutput(Program& program, const TerminalOptions& options) {
    if (options.json)
        return makeJSONOutput(
            stdout, [&program] { return program.host.now(); }, options.quiet);
    if (isatty(STDOUT_FILENO))
        return makeScreenOutput(stdout, options.quiet);
    return makePlainOutput(stdout, stderr, options.quiet);
}

void useFile(Run& run, const FileSource& file) {
    auto pace = FileSoundServer::Pace::realTime();
    if (file.fast) {
        pace = FileSoundServer::Pace::following([&run] { return run.captions->takenSeconds(); },
                                                fastLead);
    }
    run.server =
        std::make_unique<FileSoundServer>(run.program.host, openFFmpegMediaFile, file.path,
                                          std::move(pace), [&run](std::exception_ptr failure) {
                                              try {
                                                  if (failure)
                                                      std::rethrow_exception(failure);
                                                  run.ended.resume("");
                                              } catch (const std::exception& error) {
                                                  run.ended.resume(error.what());
                                              }
                                          });
}

/// A microphone by the server's id, or by the name that a person reads.
AudioSource findMicrophone(SoundServer& server, const AudioSource& wanted) {
    const auto devices = AudioInputDevices::inputDevices(server);
    if (devices.empty())
        throw RunFailure(ExitStatus::noSuchSource, "there is no microphone");
    if (!wanted.deviceID())
        return wanted;
    for (const auto& device : devices) {
        if (device.id == *wanted.deviceID() || Text::equal(device.name, *wanted.deviceID()))
            return AudioSource::microphone(device.id);
    }
    std::string text = "there is no microphone '" + *wanted.deviceID() + "'; there are:";
    for (const auto& device : devices)
        text += "\n  mic:" + device.id + "  (" + device.name + ")";
    throw RunFailure(ExitStatus::noSuchSource, text);
}

void useDemo(Run& run, const std::string& why) {
    run.say("No sound server: " + why + ".");
    run.say("So that there is something to see, a private one starts, and sample speech plays into "
            "it.");
    try {
        run.demo = std::make_unique<DemoSound>(run.program.host);
    } catch (const std::exception& error) {
        throw RunFailure(ExitStatus::noSoundServer,
                         "no sound server (" + why +
                             "), and no private one either: " + error.what());
    }
}

Task<void> openSound(Run& run, CaptionsCommand command) {
    if (const auto* file = std::get_if<FileSource>(&command.source)) {
        useFile(run, *file);
    } else {
        run.source = std::get<AudioSource>(command.source);
        run.server = std::make_unique<PulseSoundServer>();
    }
    std::string refused;
    try {
        Task<void> connecting = run.server->connect(run.main());
        co_await connecting;
    } catch (const MediaFileError& error) {
        throw RunFailure(ExitStatus::unreadableFile, error.what());
    } catch (const SoundServerError& error) {
        refused = error.what();
    }
    if (!refused.empty()) {
        if (command.sourceWasChosen)
            throw RunFailure(ExitStatus::noSoundServer, "no sound server: " + refused);
        useDemo(run, refused);
        Task<void> connecting = run.demo->server().connect(run.main());
        co_await connecting;
    }
    if (run.source.isMicrophone())
        run.source = findMicrophone(run.sound(), run.source);
}

Task<void> playDemo(Run& run) {
    try {
        Task<void> playing = run.demo->play();
        co_await playing;
        Task<bool> waiting = sleep(run.main(), afterDemoSeconds);
        co_await waiting;
        run.ended.resume("");
    } catch (const std::exception& error) {
        run.ended.resume(error.what());
    }
}

Task<void> startCaptions(Run& run, CaptionsCommand command) {
    SpeechPlatform platform = run.program.speechPlatform();
    run.captions = LiveCaptions::make(std::move(platform), run.sound(), run.program.settings);
    run.captions->onChange = [&run] { run.output.update(run.captions->core); };
    run.captions->onStatus = [&run](const std::string& text) { run.say(text); };
    run.captions->onError = [&run](const std::string& text) { run.ended.resume(text); };
    if (command.eventLog && !run.captions->writeEventLog(*command.eventLog)) {
        throw RunFailure(ExitStatus::cannotWrite, "cannot write " + command.eventLog->string());
    }
    run.say("Loading the speech model…");
    try {
        Task<void> starting = run.captions->startRecogniser(command.locale);
        co_await starting;
    } catch (const std::exception& error) {
        throw RunFailure(ExitStatus::noModel, error.what());
    }
    try {
        Task<void> starting = run.captions->startCapture(run.source);
        co_await starting;
    } catch (const std::exception& error) {
        throw RunFailure(ExitStatus::noSoundServer, error.what());
    }
}

std::string listeningText(Run& run, const CaptionsCommand& command) {
    if (const auto* file = std::get_if<FileSource>(&command.source))
        return "Captions of " + file->path.filename().string() + ". Ctrl-C ends.";
    if (run.source.isMicrophone()) {
        const auto devices = AudioInputDevices::inputDevices(run.sound());
        return "Listening to " + AudioSourceDisplayName::name(run.source, devices) +
               ". Ctrl-C ends.";
    }
    return "Listening to what this computer plays. Ctrl-C ends.";
}

Task<std::string> captionUntilTheEnd(Run& run, CaptionsCommand command) {
    Task<void> opening = openSound(run, command);
    co_await opening;
    Task<void> starting = startCaptions(run, command);
    co_await starting;
    run.say(listeningText(run, command));
    if (run.demo)
        spawn(run.main(), playDemo(run));
    const std::string problem = co_await run.ended;
    Task<void> finishing = run.captions->finish();
    co_await finishing;
    co_return problem;
}

} // namespace

Task<int> runCaptions(Program& program, const TerminalOptions& options, CaptionsCommand command) {
    Run run(program, options);
    run.output = makeOutput(program, options);
    bool interrupted = false;
    SignalWatch signals(program.host, [&] {
        if (std::exchange(interrupted, true)) {
            std::fputs("\033[0m\033[?25h\n", stderr);
            std::_Exit(static_cast<int>(ExitStatus::stoppedTwice));
        }
        run.ended.resume("");
    });
    ExitStatus status = ExitStatus::ok;
    std::string problem;
    try {
        Task<std::string> captioning = captionUntilTheEnd(run, std::move(command));
        problem = co_await captioning;
        if (!problem.empty())
            status = ExitStatus::internal;
    } catch (const RunFailure& failure) {
        problem = failure.what();
        status = failure.status;
    }
    if (run.captions)
        run.output.finish(run.captions->core);
    if (!problem.empty())
        std::fprintf(stderr, "tessarune-terminal: %s\n", problem.c_str());
    co_return static_cast<int>(status);
}

} // namespace tessarune
