#include "Terminal/history/PlayCommand.h"

#include "Terminal/CaptionOutput.h"
#include "Terminal/CommandOutput.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/KeyInput.h"
#include "Terminal/SignalWatch.h"
#include "Terminal/history/PlaybackOutput.h"
#include "Terminal/history/RecordingChoice.h"
#include "Tessarune/history/DurationTextFormatter.h"
#include "Tessarune/platform/media/AtempoConverter.h"
#include "Tessarune/platform/media/FFmpegMediaFile.h"
#include "Tessarune/platform/pulse/PulseSoundServer.h"
#include "Tessarune/playback/PlaybackTelemetry.h"
#include "TessaruneCore/text/Localization.h"

#include <unistd.h>

#include <memory>
#include <utility>

namespace tessarune {

namespace {

constexpr double arrowSeconds = 5;   // left and right
constexpr double letterSeconds = 10; // J and L
constexpr double rateStep = 0.25;

TimedSentences sentencesOf(Program& program, const HistoryItem& item) {
    const auto path = program.catalog.wordTimelineURL(item.id);
    try {
        if (program.files.exists(path))
            return TimedSentences(HistoryWordTimeline::decoded(program.files.read(path)));
    } catch (const std::exception& error) { // the sound can still be played
        printProblem(error.what());
    }
    return {};
}

/// One playback with its output and its keys.
class PlaybackRun {
  public:
    PlaybackRun(Program& program, const TerminalOptions& options, const HistoryItem& item)
        : player_(program.host, {sound_, openFFmpegMediaFile, makeAtempoConverter}),
          playback_(player_),
          telemetry_(program.host, program.logger,
                     program.settings.historyPlaybackDiagnosticsEnabled, playback_),
          output_(makeOutput(program, options)),
          ended_(Executor::main(program.host)),
          signals_(
              program.host, [this] { end(); }, [this] { redraw(); }) {
        playback_.show(sentencesOf(program, item));
        const bool isScreenUsed = !options.json && isScreen(STDOUT_FILENO);
        if (isScreenUsed && isatty(STDIN_FILENO))
            keys_ =
                std::make_unique<KeyInput>(program.host, [this](KeyPress press) { take(press); });
    }
    PlaybackRun(const PlaybackRun&) = delete;

    /// Throws nothing; a failure is in `player().problem`.
    Task<void> play(std::filesystem::path path, double from) {
        const auto shows = [this](const auto&) { show(); };
        const auto timeToken = player_.currentTime.onDidChange(shows);
        const auto problemToken = player_.problem.onDidChange(shows);
        const auto rateToken = player_.rate.onDidChange(shows);
        const auto playingToken = player_.isPlaying.onDidChange([this](bool isPlaying) {
            show();
            if (!isPlaying && !isPausedByUser_)
                ended_.resume(true);
        });
        player_.load(path);
        player_.seek(from);
        player_.startPlayback();
        co_await ended_;
        keys_.reset();
        output_.finish();
        player_.currentTime.remove(timeToken);
        player_.problem.remove(problemToken);
        player_.rate.remove(rateToken);
        player_.isPlaying.remove(playingToken);
    }

    const AudioPlayer& player() const { return player_; }
    bool wasInterrupted() const { return wasInterrupted_; }

  private:
    static PlaybackOutput makeOutput(Program& program, const TerminalOptions& options) {
        if (options.json)
            return PlaybackOutput::json([&host = program.host] { return host.wallClock(); });
        return isScreen(STDOUT_FILENO) ? PlaybackOutput::screen(options.quiet)
                                       : PlaybackOutput::lines(options.quiet);
    }

    void show() {
        if (!*player_.isLoaded || ended_.hasValue())
            return;
        PlaybackPicture picture;
        picture.position = *player_.currentTime;
        picture.duration = *player_.duration;
        picture.rate = *player_.rate;
        picture.isPlaying = *player_.isPlaying;
        picture.repeats = *player_.repeatsBoundedPlayback;
        picture.problem = *player_.problem;
        if (const auto index = playback_.highlightedIndex()) {
            const TimedSentences::Sentence& timing = *playback_.sentences().sentenceTiming(*index);
            PlaybackPicture::Sentence sentence{*index, timing.source, timing.start, timing.end};
            const auto token = *playback_.activeTokenIndex;
            if (token && index == *playback_.activeSentenceIndex) {
                sentence.wordOffset = playback_.activeTokens()[*token].offset;
                sentence.wordLength = playback_.activeTokens()[*token].length;
            }
            picture.sentence = std::move(sentence);
        }
        output_.show(picture);
    }

    void end() {
        wasInterrupted_ = true;
        ended_.resume(true);
    }

    void redraw() {
        if (keys_)
            keys_->resume();
        output_.redraw();
        show();
    }

    void togglePause() {
        isPausedByUser_ = *player_.isPlaying;
        player_.togglePlayback();
    }

    void jump(double seconds) { player_.seek(*player_.currentTime + seconds); }

    void take(KeyPress press) {
        using Key = KeyPress::Key;
        switch (press.key) {
        case Key::left:
            jump(-arrowSeconds);
            break;
        case Key::right:
            jump(arrowSeconds);
            break;
        case Key::up:
            playback_.stepSentence(-1);
            break;
        case Key::down:
            playback_.stepSentence(1);
            break;
        case Key::character:
            take(press.character);
            break;
        }
        show();
    }

    void take(char key) {
        switch (key) {
        case ' ':
        case 'k':
            togglePause();
            break;
        case 'j':
            jump(-letterSeconds);
            break;
        case 'l':
            jump(letterSeconds);
            break;
        case 'r':
            isPausedByUser_ = false;
            playback_.toggleRepeat();
            break;
        case '-':
            player_.setRate(*player_.rate - rateStep);
            break;
        case '+':
        case '=':
            player_.setRate(*player_.rate + rateStep);
            break;
        case 'q':
            end();
            break;
        default:
            break;
        }
    }

    PulseSoundServer sound_;
    AudioPlayer player_;
    TranscriptPlayback playback_;
    PlaybackTelemetry telemetry_;
    PlaybackOutput output_;
    OneShot<bool> ended_;
    bool isPausedByUser_ = false;
    bool wasInterrupted_ = false;
    SignalWatch signals_;
    std::unique_ptr<KeyInput> keys_;
};

} // namespace

Task<int> playRecording(Program& program, const TerminalOptions& options, PlayCommand command) {
    const auto chosen = chosenRecording(program, command.id);
    if (const int* status = std::get_if<int>(&chosen))
        co_return *status;
    const auto& item = std::get<HistoryItem>(chosen);
    if (command.from > 0 && command.from >= item.durationSeconds) {
        printProblem(localized("The recording is only %@ long.",
                               {DurationTextFormatter::compact(item.durationSeconds)}));
        co_return static_cast<int>(ExitStatus::usage);
    }
    PlaybackRun run(program, options, item);
    const std::filesystem::path sound = item.filePath.value_or("");
    co_await run.play(sound, command.from);
    const std::string problem = *run.player().problem;
    if (problem.empty() || run.wasInterrupted())
        co_return static_cast<int>(ExitStatus::ok);
    // If nothing of a loaded recording was played, the sound server has failed.
    if (*run.player().isLoaded && *run.player().currentTime <= command.from) {
        printProblem(localized("no sound server: %@", {problem}));
        co_return static_cast<int>(ExitStatus::noSoundServer);
    }
    printProblem(problem);
    co_return static_cast<int>(ExitStatus::unreadableFile);
}

} // namespace tessarune
