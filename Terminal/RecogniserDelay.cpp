#include "Terminal/RecogniserDelay.h"

#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tessarune {

namespace {

constexpr double lookEverySeconds = 1;
/// A look that comes so late was held up together with the whole program; sound of so many seconds
/// that comes at once, by the sound server.
constexpr double standstillSeconds = 1;
/// Sound queued meanwhile may need as long again, and somewhat more.
constexpr double catchUpSeconds = 10;

constexpr double progressEverySeconds = 0.2;
constexpr double lookForProgressSeconds = 0.01;
/// A recogniser that is behind and makes no progress for so long is no longer waited for.
constexpr double longestStandstillSeconds = 30;

double stat(const LiveSystemAudioTranscriber& transcriber, std::string_view name) {
    const PerfStats stats = transcriber.perfStats();
    const auto found = stats.find(std::string(name));
    return found == stats.end() ? 0 : found->second;
}

} // namespace

double RecogniserDelay::heardSeconds() const {
    return std::max(stat(transcriber_, "convertedAudioSeconds") - secondsBehind(), 0.0);
}

double RecogniserDelay::secondsBehind() const {
    return stat(transcriber_, "secondsBehind");
}

void RecogniserDelay::watch(std::function<void(const std::string&)> say) {
    say_ = std::move(say);
    nextLookAt_ = host_.now() + lookEverySeconds;
    watch_ = host_.after(lookEverySeconds, [this] { look(); });
}

void RecogniserDelay::look() {
    const double now = host_.now();
    const double late = now - nextLookAt_;
    const double behind = secondsBehind();
    // A slow recogniser falls behind by a second a second; what comes faster was held up before it.
    const double arrivedAtOnce = behind - lastBehind_ - lookEverySeconds;
    const double heldUp = std::max(late, arrivedAtOnce);
    if (heldUp > standstillSeconds)
        excusedUntil_ = now + heldUp + catchUpSeconds;
    lastBehind_ = behind;
    if (now >= excusedUntil_ && behind >= worthTelling_) {
        say_(localized("The captions are %lld s behind: this computer is too slow for the speech "
                       "model.",
                       {std::to_string(static_cast<int>(behind))}));
        worthTelling_ = 2 * behind;
    }
    nextLookAt_ = now + lookEverySeconds;
    watch_ = host_.after(lookEverySeconds, [this] { look(); });
}

void RecogniserDelay::watchProgress(double duration, std::function<void(int percent)> say) {
    sayProgress_ = std::move(say);
    lookForProgress(duration);
}

void RecogniserDelay::lookForProgress(double duration) {
    // The last pieces are processed while the rest of the program catches up.
    const int now = static_cast<int>(std::clamp(100 * heardSeconds() / duration, 0.0, 100.0));
    if (now > std::exchange(percent_, std::max(now, percent_)))
        sayProgress_(now);
    progressWatch_ =
        host_.after(progressEverySeconds, [this, duration] { lookForProgress(duration); });
}

Task<void> RecogniserDelay::caughtUp(std::function<bool()> isCancelled) {
    double least = secondsBehind();
    double movedAt = host_.now();
    while (!isCancelled() && secondsBehind() > 0 &&
           host_.now() - movedAt < longestStandstillSeconds) {
        Task<bool> waiting = sleep(Executor::main(host_), lookForProgressSeconds);
        co_await waiting;
        if (secondsBehind() < least) {
            least = secondsBehind();
            movedAt = host_.now();
        }
    }
}

} // namespace tessarune
