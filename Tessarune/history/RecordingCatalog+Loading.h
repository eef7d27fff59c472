#pragma once

#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/history/RecordingIndex.h"

#include <exception>
#include <string>

namespace tessarune {

/// What reading "recordings.json" gave; for the sources of RecordingCatalog.
struct RecordingCatalog::LoadedIndex {
    IndexState state = IndexState::missing;
    RecordingIndex index; ///< empty unless the state is good
    std::string bytes;
    std::exception_ptr failure; ///< of the disk, if it could not even be read
};

} // namespace tessarune
