#include "Terminal/RecogniserDelay.h"

#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tessarune {

namespace {

constexpr double checkEverySeconds = 1;
/// If a check is late by more than this, the whole program was held up. If more seconds of sound
/// than this arrive at once, the sound server was held up.
constexpr double heldUpSeconds = 1;
/// After a hold-up, the recogniser may need as long as the hold-up lasted, and these seconds more,
/// to process the queued sound. No delay is reported meanwhile.
constexpr double catchUpSeconds = 10;

constexpr double progressEverySeconds = 0.2;
constexpr double checkCaughtUpSeconds = 0.01;
/// The wait for a recogniser that is behind ends after this time without progress.
constexpr double longestStallSeconds = 30;

double stat(const LiveSystemAudioTranscriber& transcriber, std::string_view name) {
    const PerfStats stats = transcriber.perfStats();
    const auto found = stats.find(std::string(name));
    return found == stats.end() ? 0 : found->second;
}

} // namespace

double RecogniserDelay::processedSeconds() const {
    return std::max(stat(transcriber_, "convertedAudioSeconds") - secondsBehind(), 0.0);
}

double RecogniserDelay::secondsBehind() const {
    return stat(transcriber_, "secondsBehind");
}

void RecogniserDelay::watch(std::function<void(const std::string&)> say) {
    say_ = std::move(say);
    nextCheckAt_ = host_.now() + checkEverySeconds;
    watch_ = host_.after(checkEverySeconds, [this] { checkDelay(); });
}

void RecogniserDelay::checkDelay() {
    const double now = host_.now();
    const double late = now - nextCheckAt_;
    const double behind = secondsBehind();
    // A slow recogniser falls behind by at most one second per second. If the delay grows faster,
    // the sound was held up before it reached the recogniser.
    const double arrivedAtOnce = behind - lastBehind_ - checkEverySeconds;
    const double heldUp = std::max(late, arrivedAtOnce);
    if (heldUp > heldUpSeconds)
        excusedUntil_ = now + heldUp + catchUpSeconds;
    lastBehind_ = behind;
    if (now >= excusedUntil_ && behind >= nextReportedDelay_) {
        say_(localized("The captions are %lld s behind: this computer is too slow for the speech "
                       "model.",
                       {std::to_string(static_cast<int>(behind))}));
        nextReportedDelay_ = 2 * behind;
    }
    nextCheckAt_ = now + checkEverySeconds;
    watch_ = host_.after(checkEverySeconds, [this] { checkDelay(); });
}

void RecogniserDelay::watchProgress(double duration, std::function<void(int percent)> say) {
    sayProgress_ = std::move(say);
    checkProgress(duration);
}

void RecogniserDelay::checkProgress(double duration) {
    // The reported percentage never decreases.
    const int now = static_cast<int>(std::clamp(100 * processedSeconds() / duration, 0.0, 100.0));
    if (now > std::exchange(percent_, std::max(now, percent_)))
        sayProgress_(now);
    progressWatch_ =
        host_.after(progressEverySeconds, [this, duration] { checkProgress(duration); });
}

Task<void> RecogniserDelay::caughtUp(std::function<bool()> isCancelled) {
    double least = secondsBehind();
    double lastProgressAt = host_.now();
    while (!isCancelled() && secondsBehind() > 0 &&
           host_.now() - lastProgressAt < longestStallSeconds) {
        Task<bool> waiting = sleep(Executor::main(host_), checkCaughtUpSeconds);
        co_await waiting;
        if (secondsBehind() < least) {
            least = secondsBehind();
            lastProgressAt = host_.now();
        }
    }
}

} // namespace tessarune
