#include "bench/live/LiveSession.h"

#include "Tessarune/audio/AudioSessionRecorder.h"
#include "Tessarune/platform/media/SwresampleConverter.h"

#include <malloc.h>

#include <stdexcept>
#include <utility>

namespace tessarune {

namespace {

/// How often `run` checks whether the session has stopped.
constexpr double lookAgainSeconds = 0.01;

} // namespace

LiveSession::LiveSession(Program& program, SpeechPlatform platform, ResultLatency& latency,
                         CaptionOutput output)
    : program_(program),
      platform_(std::move(platform)),
      latency_(latency),
      output_(std::move(output)),
      sound_(program.host,
             {[](const std::string&) {},
              [this](std::exception_ptr failure) { ended_.resume(!failure); }, [] { return 0.0; }}),
      started_(Executor::main(program.host)),
      ended_(Executor::main(program.host)) {}

void LiveSession::makeStore() {
    SoundServer& server = sound_.server();
    permissions_ =
        std::make_unique<PermissionsManager>(program_.host, server, program_.defaults,
                                             SystemAuthorization::ofServer(program_.host, server));
    struct Watch final : SessionDiagnostics {
        explicit Watch(ResultLatency& its) : latency(its) {}
        void appendASREvent(const ASREvent& event, double /*t*/) override {
            latency.eventArrived(event);
        }
        void captionDisplayRefreshed(const CaptionDisplayRefresh& refresh) override {
            if (refresh.reason == "core.activity")
                latency.coreChanged(refresh.t);
        }
        ResultLatency& latency;
    };
    store_ =
        LiveTranscriptStore::make({.speech = platform_,
                                   .sound = server,
                                   .files = program_.files,
                                   .settings = program_.settings,
                                   .permissions = *permissions_,
                                   .catalog = program_.catalog,
                                   .recorder = AudioSessionRecorder::create(
                                       program_.host, program_.files, program_.logger,
                                       program_.catalog.forRecorder(), makeSwresampleConverter),
                                   .compressor = program_.compressor,
                                   .translation = {},
                                   .diagnostics = std::make_shared<Watch>(latency_),
                                   .scheduleHistoryRefinement = [](const auto&) {},
                                   .returnMemory = [] { malloc_trim(0); }});
    observe();
}

void LiveSession::observe() {
    store_->view().captionDisplay.frame.onDidChange([this](const auto& frame) {
        output_.update({frame, store_->view().captions, {}});
    });
    store_->view().sessionPhase.onDidChange([this](LiveSessionPhase phase) {
        if (phase == LiveSessionPhase::listening || phase == LiveSessionPhase::failed)
            started_.resume(phase == LiveSessionPhase::listening);
    });
}

Task<void> LiveSession::run(std::filesystem::path file, std::function<void()> onListening) {
    CaptionsCommand command;
    command.source = FileSource{std::move(file), false};
    command.sourceWasChosen = true;
    Task<void> opening = sound_.open(std::move(command));
    co_await opening;
    makeStore();
    store_->selectSource(sound_.source());
    store_->startListening(LiveSessionControlTrigger::programmatic());
    const bool listening = co_await started_;
    if (!listening && store_->view().startFailure)
        std::rethrow_exception(store_->view().startFailure);
    onListening();
    sound_.begin();
    const bool played = co_await ended_;
    store_->stopListening(LiveSessionControlTrigger::programmatic());
    while (store_->isStopping()) {
        Task<bool> waiting = sleep(Executor::main(program_.host), lookAgainSeconds);
        co_await waiting;
    }
    output_.finish({*store_->view().captionDisplay.frame, store_->view().captions, {}});
    if (!played)
        throw std::runtime_error("the file broke off");
}

} // namespace tessarune
