#pragma once

#include "TessaruneCore/host/Host.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tessarune {

/// Reveals a growing text word by word at a steady pace, so that a reader sees a stream where the
/// recogniser delivers bursts. A stream that falls behind speeds up; one that falls far behind
/// shows everything at once.
///
/// The state machine behind one caption row; a view draws `renderedTail` after each `onReveal`.
/// Lengths are in characters. Main queue. The destructor cancels the pending step.
class SmoothStreamingText {
  public:
    struct Options {
        bool animated = true;
        bool reduceMotion = false; ///< the desktop's accessibility setting
        std::int64_t paceMS = 120; ///< between two words while the stream keeps up
        bool highlightLastWord = false;

        bool operator==(const Options&) const = default;
    };
    /// The visible text; `newestWord` follows `settled` and is highlighted.
    struct RenderedTail {
        std::string settled;
        std::string newestWord; ///< empty if nothing is highlighted

        bool operator==(const RenderedTail&) const = default;
    };

    /// `revealedCount` characters of the first text are visible from the start.
    explicit SmoothStreamingText(Host& host, std::size_t revealedCount = 0)
        : host_(host), revealedCount_(revealedCount) {}
    ~SmoothStreamingText() { stop(); }
    SmoothStreamingText(const SmoothStreamingText&) = delete;
    SmoothStreamingText& operator=(const SmoothStreamingText&) = delete;

    /// Takes effect with the next text.
    Options options;
    /// Called with the number of visible characters after each step.
    std::function<void(std::size_t revealedCount)> onReveal;

    /// Sets the text, and starts to reveal the part that is not visible yet.
    void stream(std::string text);
    /// Cancels the pending step. Call it when the view disappears.
    void stop() { ticker_.cancel(); }

    std::size_t revealedCount() const { return revealedCount_; }
    RenderedTail renderedTail() const;

  private:
    void startReveal();
    void revealNextWord();
    std::size_t endOfNextWord() const;
    bool isSpace(std::size_t index) const;
    void reveal(std::size_t count);
    std::size_t byteOffset(std::size_t characters) const {
        return characters == 0 ? 0 : characterEnds_[characters - 1];
    }

    Host& host_;
    std::string text_;
    std::vector<std::size_t> characterEnds_; // byte offsets in `text_`
    std::size_t revealedCount_;
    DelayedCall ticker_;
};

} // namespace tessarune
