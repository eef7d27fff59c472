#pragma once

#include "Tessarune/audio/MediaFile.h"

namespace tessarune {

/// Opens sound files as if their sound were repeated for `seconds`.
OpenMediaFile repeatedSound(double seconds);

} // namespace tessarune
