#include "Tessarune/display/SmoothStreamingText.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

/// At this backlog, in characters, the remainder appears at once.
constexpr std::size_t lostBacklog = 401;
/// Up to this backlog the stream runs at its normal pace.
constexpr std::size_t calmBacklog = 24;
constexpr std::int64_t shortestStepMS = 90;

} // namespace

void SmoothStreamingText::stream(std::string text) {
    text_ = std::move(text);
    characterEnds_.clear();
    std::size_t end = 0;
    for (const std::string_view character : Text::characters(text_))
        characterEnds_.push_back(end += character.size());

    if (!options.animated || options.reduceMotion) {
        stop();
        reveal(characterEnds_.size());
        return;
    }
    revealedCount_ = std::min(revealedCount_, characterEnds_.size());
    if (revealedCount_ < characterEnds_.size())
        startReveal();
}

void SmoothStreamingText::startReveal() {
    stop();
    ticker_ = host_.after(0, [this] { revealNextWord(); });
}

void SmoothStreamingText::revealNextWord() {
    if (revealedCount_ >= characterEnds_.size())
        return;
    const std::size_t backlog = characterEnds_.size() - revealedCount_;
    if (backlog >= lostBacklog) {
        reveal(characterEnds_.size());
        return;
    }
    // The next step is scheduled before `reveal`, because `onReveal` may call `stream` or `stop`.
    const auto effectiveBacklog = static_cast<std::int64_t>(std::max(backlog, calmBacklog));
    const std::int64_t delayMS = std::max(
        options.paceMS * static_cast<std::int64_t>(calmBacklog) / effectiveBacklog, shortestStepMS);
    ticker_ = host_.after(static_cast<double>(delayMS) / 1000, [this] { revealNextWord(); });
    reveal(endOfNextWord());
}

/// The end of the next word, including the spaces before and after it. Text without spaces is one
/// word.
std::size_t SmoothStreamingText::endOfNextWord() const {
    std::size_t index = revealedCount_;
    const auto skip = [&](bool spaces) {
        while (index < characterEnds_.size() && isSpace(index) == spaces)
            ++index;
    };
    skip(true);
    skip(false);
    skip(true);
    return index;
}

bool SmoothStreamingText::isSpace(std::size_t index) const {
    return text_[byteOffset(index)] == ' ' && byteOffset(index + 1) - byteOffset(index) == 1;
}

void SmoothStreamingText::reveal(std::size_t count) {
    revealedCount_ = count;
    if (onReveal)
        onReveal(count);
}

SmoothStreamingText::RenderedTail SmoothStreamingText::renderedTail() const {
    const std::string visible = text_.substr(0, byteOffset(revealedCount_));
    if (!options.highlightLastWord)
        return {visible, ""};
    std::size_t start = revealedCount_;
    while (start > 0 && isSpace(start - 1))
        --start;
    if (start == 0)
        return {visible, ""};
    while (start > 0 && !isSpace(start - 1))
        --start;
    return {visible.substr(0, byteOffset(start)), visible.substr(byteOffset(start))};
}

} // namespace tessarune
