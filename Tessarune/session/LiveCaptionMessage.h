#pragma once

#include "TessaruneCore/CaptionCore.h"

#include <optional>
#include <string>

namespace tessarune {

/// What the program itself says in the live caption line, until somebody speaks or it is taken
/// away. It was not heard and is never saved. Main queue; the core outlives it.
class LiveCaptionMessage {
  public:
    explicit LiveCaptionMessage(CaptionCore& core) : core_(core) {}

    void present(const std::string& text, double now);
    /// Whether the live caption line is such a text and not speech.
    bool isShown() const;
    /// Before the live captions become history.
    void takeAway();
    void forget() { message_.reset(); }

  private:
    CaptionCore& core_;
    std::optional<CaptionSegment> message_;
};

} // namespace tessarune
