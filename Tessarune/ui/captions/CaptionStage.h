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
/// `nullopt` if there are captions. While a session without captions is stopping: `silent` if its
/// sound was silent, otherwise `nullopt`.
std::optional<CaptionEmptyPresentation> emptyPresentation(const LiveCaptionDisplayFrame& frame);
/// A hash of the drawn captions. It changes with every visible change of a caption.
std::uint64_t contentRevision(const LiveCaptionDisplayFrame& frame);

} // namespace CaptionStage

} // namespace tessarune
