#pragma once

#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/search/SearchIndex.h"
#include "Tessarune/shell/FileSystem.h"
#include "TessaruneCore/UUID.h"

#include <map>
#include <optional>
#include <string>

namespace tessarune {

/// Reads the sidecars for the search. Any thread.
class TranscriptFiles {
  public:
    /// Both must outlive it.
    TranscriptFiles(FileSystem& files, const RecordingCatalog& catalog)
        : files_(files), catalog_(catalog) {}

    struct Texts {
        std::string source;
        std::string translation; ///< without the source, one line a translation
    };

    /// The recordings that have text, each with a stamp that changes when its files are replaced.
    /// Throws std::system_error.
    std::map<UUID, std::string> stamps();
    /// `nullopt` if they cannot be read; empty texts if they are gone.
    std::optional<Texts> texts(const UUID& id);

  private:
    std::string stamp(const std::filesystem::path& path);
    std::string read(const std::filesystem::path& path);

    FileSystem& files_;
    const RecordingCatalog& catalog_;
};

} // namespace tessarune
