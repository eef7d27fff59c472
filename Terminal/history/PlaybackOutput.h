#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace tessarune {

/// The state of a playback at one moment.
struct PlaybackPicture {
    struct Sentence {
        std::size_t index = 0;
        std::string text;
        double start = 0;
        double end = 0;
        std::size_t wordOffset = 0; ///< where the word that is heard begins, in bytes of `text`
        std::size_t wordLength = 0; ///< in bytes; 0: the word is not known
    };

    double position = 0; ///< seconds, as all times here
    double duration = 0;
    double rate = 1;
    bool isPlaying = false;
    bool repeats = false;
    std::string problem;
    std::optional<Sentence> sentence;
};

/// A form of playback output: a screen that is rewritten, lines, or JSON. Main queue.
struct PlaybackOutput {
    std::function<void(const PlaybackPicture&)> show;
    std::function<void()> redraw; ///< call after another program used the terminal
    std::function<void()> finish;

    /// Past sentences scroll up. The current one is shown below them, with a line about the
    /// playback unless `quiet`.
    static PlaybackOutput screen(bool quiet);
    static PlaybackOutput lines(bool quiet);
    static PlaybackOutput json(std::function<double()> wallClock);
};

} // namespace tessarune
