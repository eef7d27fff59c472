#pragma once

#include "Tessarune/history/HistoryItem.h"
#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/shell/FileSystem.h"

#include <vector>

namespace tessarune::HistoryItemLoader {

/// A compressed recording of at most this many bytes, unless it was imported, contains no sound and
/// is not listed.
inline constexpr std::int64_t emptyCompressedSize = 16384;

/// The rows of the history list, newest first: the catalog's entries whose audio exists, except
/// recordings without sound. Any thread.
std::vector<HistoryItem> load(RecordingCatalog& catalog, FileSystem& files);

/// The row of any entry, even of one that `load` leaves out. Any thread.
HistoryItem row(const RecordingMetadata& recording, RecordingCatalog& catalog, FileSystem& files);

} // namespace tessarune::HistoryItemLoader
