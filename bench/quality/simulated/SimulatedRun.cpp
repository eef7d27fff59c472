#include "bench/quality/simulated/SimulatedRun.h"

#include "Tessarune/platform/speech-engine/SpeechEngineFactory.h"
#include "TessaruneCore/host/SimulatedHost.h"
#include "bench/live/EngineAlone.h"
#include "bench/quality/DisplayedWords.h"
#include "bench/support/CPUClock.h"

#include <exception>
#include <optional>
#include <utility>

namespace tessarune {

namespace {

/// The seconds that a guess takes from the recogniser to the screen.
constexpr double guessToScreen = 0.06;

// Global, because the engine's functions are plain pointers without a context.
SimulatedHost* passHost = nullptr;
std::int32_t (*realPass)(moonshine::Calls::Handle, moonshine::Calls::Handle, std::uint32_t,
                         moonshine::Transcript**) = nullptr;

/// The estimated processor time of a pass with the smallest model, on one thread. If a line has
/// grown or become complete, the engine recognises the whole line again, so a pass takes longer as
/// the line grows.
double passSeconds(const moonshine::Transcript& transcript) {
    constexpr double eachPass = 0.002;
    constexpr double eachLine = 0.005;
    constexpr double eachSecondOfSound = 0.055;
    double seconds = eachPass;
    for (std::uint64_t i = 0; i < transcript.lineCount; ++i) {
        const moonshine::Line& line = transcript.lines[i];
        if (line.isUpdated != 0)
            seconds += eachLine + eachSecondOfSound * static_cast<double>(line.duration);
    }
    return seconds;
}

std::int32_t timedPass(moonshine::Calls::Handle transcriber, moonshine::Calls::Handle stream,
                       std::uint32_t flags, moonshine::Transcript** transcript) {
    const std::int32_t result = realPass(transcriber, stream, flags, transcript);
    if (result >= 0 && *transcript)
        passHost->sleepComputer(passSeconds(**transcript));
    return result;
}

std::shared_ptr<const MoonshineLibrary> library() {
    moonshine::Calls calls = MoonshineLibrary::shared()->calls();
    realPass = std::exchange(calls.transcribeStream, timedPass);
    return std::make_shared<const MoonshineLibrary>(calls);
}

/// Follows the recogniser's results. As in the program, a newer guess replaces a guess on its way
/// to the screen, and a final discards it.
class ResultTrace {
  public:
    explicit ResultTrace(double from) : from_(from) {}

    void read(const SpeechResult& result, double t) {
        const std::vector<std::string> words = DisplayedWords::asSpoken(result.text());
        if (guess_ && guess_->shownAt <= t)
            showGuess();
        if (!result.isFinal) {
            guess_ = {guess_ ? guess_->shownAt : t + guessToScreen, words};
            return;
        }
        guess_.reset();
        if (!result.runs.empty() && result.runs.front().audioStart.value_or(t) < from_)
            trace_ = {}; // discards the lead-in
        else
            trace_.show(t, words, {});
    }

    WordHistory history() {
        showGuess();
        return trace_.history();
    }

  private:
    struct Guess {
        double shownAt;
        std::vector<std::string> words;
    };

    void showGuess() {
        if (guess_)
            trace_.show(guess_->shownAt, {}, guess_->words);
        guess_.reset();
    }

    double from_;
    WordTrace trace_;
    std::optional<Guess> guess_;
};

Task<void> noteFailure(Task<void> running, std::exception_ptr& failure) {
    try {
        co_await running;
    } catch (...) {
        failure = std::current_exception();
    }
}

} // namespace

SimulatedRun::SimulatedRun(ModelStore& models, const std::filesystem::path& file, double from) {
    const double before = CPUClock::process();
    SimulatedHost host;
    passHost = &host;
    RecognitionPolicy policy;
    policy.processorSeconds = [&host] { return host.now(); };
    SpeechEngine engine = makeSpeechEngine(
        host, models, [] { return std::string(SpeechModels::smallest); }, library, policy);
    double startedAt = 0;
    ResultTrace trace(from);
    std::exception_ptr failure;
    std::function<void()> begin = [&] { startedAt = host.now(); };
    std::function<void(const SpeechResult&)> read = [&](const SpeechResult& result) {
        trace.read(result, host.now() - startedAt);
    };
    Task<void> running =
        runEngineAlone(host, std::move(engine), file, std::move(begin), std::move(read));
    spawn(Executor::main(host), noteFailure(std::move(running), failure));
    host.runUntilIdle();
    host.end();
    if (failure)
        std::rethrow_exception(failure);
    history_ = trace.history();
    processorSeconds_ = CPUClock::process() - before;
}

} // namespace tessarune
