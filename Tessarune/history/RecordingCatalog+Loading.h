#pragma once

#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/history/RecordingIndex.h"

#include <exception>
#include <string>

namespace tessarune {

/// The result of reading "recordings.json"; internal to the sources of RecordingCatalog.
struct RecordingCatalog::LoadedIndex {
    IndexState state = IndexState::missing;
    RecordingIndex index; ///< empty unless the state is good
    std::string bytes;
    std::exception_ptr failure; ///< the disk's error, if the file could not be read
};

} // namespace tessarune
