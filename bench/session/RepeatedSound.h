#pragma once

#include "Tessarune/audio/MediaFile.h"

namespace tessarune {

/// Opens files of sound as if they went on from the beginning again and again, for so many seconds.
OpenMediaFile repeatedSound(double seconds);

} // namespace tessarune
