#pragma once

#include "TessaruneCore/CaptionCore.h"

#include <optional>
#include <string>

namespace tessarune {

/// A message of the program in the live caption line. It stays until speech replaces it or it is
/// removed, and is never saved. Main queue; the core outlives it.
class LiveCaptionMessage {
  public:
    explicit LiveCaptionMessage(CaptionCore& core) : core_(core) {}

    void present(const std::string& text, double now);
    /// Whether the live caption line shows the message instead of speech.
    bool isShown() const;
    /// Removes the message from the live caption line. Call before the captions are sealed.
    void remove();
    /// Drops the message but leaves the live caption line unchanged.
    void forget() { message_.reset(); }

  private:
    CaptionCore& core_;
    std::optional<CaptionSegment> message_;
};

} // namespace tessarune
