#include "Tessarune/platform/host/LoopHost.h"
#include "Tessarune/platform/media/AtempoConverter.h"
#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/pulse/PrivateSoundServer.h"
#include "Tessarune/platform/pulse/PulseSoundServer.h"
#include "Tessarune/playback/AudioPlayer.h"
#include "bench/support/Statistics.h"
#include "tests/integration/sound/Chirp.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

/// Measures how soon a long recording is heard after a start and after a seek, and whether the
/// sound has gaps at any speed. The recording is played through a private sound server, whose
/// output is recorded. See bench/README.md.

namespace tessarune {
namespace {

constexpr double patience = 10; // seconds
constexpr double minimumAmplitude = testing::Chirp::amplitude / 3;

/// A player whose output is recorded and examined.
class HeardPlayer {
  public:
    explicit HeardPlayer(std::filesystem::path path)
        : path_(std::move(path)), file_(openFFmpegMediaFile(path_)) {
        spawn(Executor::main(host_), listen(this));
        if (!until([this] { return stream_ != nullptr; }))
            throw std::runtime_error("the output cannot be heard");
        // PulseAudio's null output begins with two seconds of silence.
        pass(2.5);
    }
    ~HeardPlayer() { stream_.reset(); }
    HeardPlayer(const HeardPlayer&) = delete;

    AudioPlayer& player() { return player_; }
    double duration() { return file_->duration().value_or(0); }

    /// Opens and starts the recording. Returns the seconds until it is heard.
    double start() {
        player_.teardown();
        pass(0.5);
        frequency_ = 0;
        const double begin = host_.now();
        player_.load(path_);
        player_.startPlayback();
        if (!until([this] { return frequency_ > 0; }))
            throw std::runtime_error("nothing is heard: " + *player_.problem);
        return heardAt_ - begin;
    }
    /// Seeks. Returns the seconds until the sound of that place is heard; `nullopt` if it is too
    /// similar to the current sound.
    std::optional<double> seek(double place) {
        constexpr double distinct = 200; // Hz
        constexpr double equal = 30;     // Hz
        const double expected = frequencyAt(place);
        if (std::abs(expected - frequency_) < distinct)
            return std::nullopt;
        const double begin = host_.now();
        player_.seek(place);
        if (!until([&] { return std::abs(frequency_ - expected) < equal; }))
            throw std::runtime_error("the sound of the place is not heard");
        return heardAt_ - begin;
    }
    /// The frequency of the file's sound at that place, in Hz.
    double frequencyAt(double place) {
        constexpr double seconds = 0.05;
        AudioBuffer sound{file_->format(), {}};
        file_->seek(place);
        while (sound.seconds() < seconds) {
            const AudioBufferPtr block = file_->read();
            if (!block)
                break;
            sound.samples.insert(sound.samples.end(), block->samples.begin(), block->samples.end());
        }
        return testing::frequencyOf(sound.samples, sound.format.sampleRate);
    }
    /// Listens for `seconds`. Returns the number of silent buffers, each of about a hundredth of a
    /// second.
    int silences(double seconds) {
        silences_ = 0;
        pass(seconds);
        return silences_;
    }
    void pass(double seconds) {
        const double end = host_.now() + seconds;
        until([&] { return host_.now() >= end; });
    }

  private:
    static Task<void> listen(HeardPlayer* self) {
        const Executor main = Executor::main(self->host_);
        Task<void> connecting = self->server_.connect(main);
        co_await connecting;
        RecordRequest request;
        request.sourceID = std::string(PrivateSoundServer::outputID) + ".monitor";
        request.channels = 1;
        RecordHandlers handlers;
        handlers.onBuffer = [self](const AudioBufferPtr& sound) { self->hear(*sound); };
        auto opening = self->server_.openRecordStream(request, handlers, main);
        self->stream_ = co_await opening;
    }
    void hear(const AudioBuffer& sound) {
        const bool isSound = testing::amplitudeOf(sound.samples) >= minimumAmplitude;
        silences_ += isSound ? 0 : 1;
        if (!isSound)
            return;
        heardAt_ = host_.now();
        frequency_ = testing::frequencyOf(sound.samples, sound.format.sampleRate);
    }
    /// Runs until the condition holds, at most for `patience`. Returns whether it holds.
    bool until(const std::function<bool()>& condition) {
        const double deadline = host_.now() + patience;
        std::function<void()> look = [&] {
            if (condition() || host_.now() > deadline)
                host_.quit();
            else
                host_.after(0.001, look);
        };
        look();
        host_.run();
        return condition();
    }

    LoopHost host_;
    PrivateSoundServer daemon_;
    PulseSoundServer server_{daemon_.address()};
    const std::filesystem::path path_;
    const std::unique_ptr<MediaFile> file_;
    AudioPlayer player_{host_, {server_, openFFmpegMediaFile, makeAtempoConverter}};
    std::unique_ptr<RecordStream> stream_;
    double frequency_ = 0; ///< of the last sound; 0: nothing was heard yet
    double heardAt_ = 0;
    int silences_ = 0;
};

void print(const char* what, const std::vector<double>& seconds) {
    std::printf("%-28s median %4.0f ms, nine in ten within %4.0f ms, all within %4.0f ms (%zu)\n",
                what, Statistics::median(seconds) * 1e3, Statistics::percentile(seconds, 0.9) * 1e3,
                Statistics::percentile(seconds, 1) * 1e3, seconds.size());
}

void measure(const std::filesystem::path& path) {
    constexpr int starts = 20;
    constexpr std::size_t seeks = 60;
    constexpr double gapSeconds = 5;
    HeardPlayer heard(path);
    std::mt19937 random(1);
    std::vector<double> seconds;
    for (int i = 0; i < starts; ++i)
        seconds.push_back(heard.start());
    print("start", seconds);

    seconds.clear();
    std::uniform_real_distribution<> place(0, heard.duration() - 60); // with a minute to play
    while (seconds.size() < seeks) {
        if (const auto took = heard.seek(place(random)))
            seconds.push_back(*took);
        heard.pass(0.3);
    }
    print("seek", seconds);
    for (const double rate : {0.5, 0.75, 1.0, 1.5, 2.0, 2.5, 3.0}) {
        // The pitch rises during each minute of the file. Between the minutes are some milliseconds
        // of silence. Playback begins in the first third of a minute, so as not to reach them.
        constexpr double frequencyOfFirstThird = 1200;
        double from = place(random);
        while (heard.frequencyAt(from) > frequencyOfFirstThird)
            from = place(random);
        heard.player().setRate(rate);
        heard.player().seek(from);
        heard.pass(0.5);
        std::printf(
            "speed %-4g                   %d hundredths of a second without sound in %g s\n", rate,
            heard.silences(gapSeconds), gapSeconds);
    }
}

} // namespace
} // namespace tessarune

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench-playback FILE; bench/playback/run makes one\n");
        return EXIT_FAILURE;
    }
    try {
        tessarune::measure(argv[1]);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench-playback: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
