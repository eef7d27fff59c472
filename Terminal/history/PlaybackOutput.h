#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tessarune {

/// A playback as it is shown at one moment.
struct PlaybackPicture {
    struct Sentence {
        std::size_t index = 0;
        std::string text;
        double start = 0;
        double end = 0;
        std::size_t wordOffset = 0; ///< bytes of the text
        std::size_t wordLength = 0; ///< of the word that is heard; 0: none is known
    };

    double position = 0; ///< seconds, as all times here
    double duration = 0;
    double rate = 1;
    bool isPlaying = false;
    bool repeats = false;
    std::string problem;
    std::optional<Sentence> sentence;
};

/// How a playback is shown: on a terminal, as lines, or as JSON. Main queue.
struct PlaybackOutput {
    std::function<void(const PlaybackPicture&)> show;
    std::function<void()> beginAnew; ///< after the terminal was somebody else's
    std::function<void()> finish;

    /// The sentences scroll up; the one that is heard stands below them with a line about the
    /// playback, unless that is not wanted.
    static PlaybackOutput screen(bool quiet);
    static PlaybackOutput lines(bool quiet);
    static PlaybackOutput json(std::function<double()> wallClock);
};

} // namespace tessarune
