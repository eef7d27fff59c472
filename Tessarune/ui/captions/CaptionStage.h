#pragma once

#include "Tessarune/display/LiveCaptionDisplayFrame.h"

#include <cstdint>
#include <optional>

namespace tessarune {

/// What the stage shows while there are no captions.
enum class CaptionEmptyPresentation { idle, checking, silent };

/// What the stage shows for a frame. The stage is the part of the caption window with the captions.
/// Pure functions.
namespace CaptionStage {

bool hasCaptionOutput(const LiveCaptionDisplayFrame& frame);
/// `nullopt` while there are captions, and while a session without captions is stopping, unless its
/// sound was silent.
std::optional<CaptionEmptyPresentation> emptyPresentation(const LiveCaptionDisplayFrame& frame);
/// A hash of the drawn content: it changes with every visible change.
std::uint64_t contentRevision(const LiveCaptionDisplayFrame& frame);

} // namespace CaptionStage

} // namespace tessarune
