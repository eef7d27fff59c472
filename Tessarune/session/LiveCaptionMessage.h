#pragma once

#include "TessaruneCore/CaptionCore.h"

#include <optional>
#include <string>

namespace tessarune {

/// The program's own text in the live caption line, until somebody speaks or it is removed. It is
/// not speech and is never saved. Main queue; the core outlives it.
class LiveCaptionMessage {
  public:
    explicit LiveCaptionMessage(CaptionCore& core) : core_(core) {}

    void present(const std::string& text, double now);
    /// Whether the live caption line shows such a text instead of speech.
    bool isShown() const;
    /// Call before the live captions become history.
    void takeAway();
    void forget() { message_.reset(); }

  private:
    CaptionCore& core_;
    std::optional<CaptionSegment> message_;
};

} // namespace tessarune
