#pragma once

#include "Tessarune/history/RecordingCatalog.h"
#include "Tessarune/shell/FileSystem.h"
#include "TessaruneCore/UUID.h"

#include <map>
#include <optional>
#include <string>

namespace tessarune {

/// Reads the texts of recordings for the search. Any thread.
class TranscriptFiles {
  public:
    /// Both must outlive this.
    TranscriptFiles(FileSystem& files, const RecordingCatalog& catalog)
        : files_(files), catalog_(catalog) {}

    struct Texts {
        std::string source;
        std::string translation; ///< one line per translation, without the source
    };

    /// The recordings that have transcripts, each with a stamp: the lengths and modification times
    /// of the recording's text files. Throws `std::system_error`.
    std::map<UUID, std::string> stamps();
    /// `nullopt` if the files cannot be read; empty texts if they do not exist.
    std::optional<Texts> texts(const UUID& id);

  private:
    std::string stamp(const std::filesystem::path& path);
    std::string read(const std::filesystem::path& path);

    FileSystem& files_;
    const RecordingCatalog& catalog_;
};

} // namespace tessarune
