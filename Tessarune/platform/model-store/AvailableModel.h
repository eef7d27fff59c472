#pragma once

#include "Tessarune/platform/model-store/ModelStore.h"
#include "TessaruneCore/host/Task.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tessarune {

/// A file to be fetched and its checksums. At least one checksum is required: unverifiable files
/// are not fetched.
struct FileToFetch {
    std::string name; ///< under which it is kept
    std::string url;
    std::uint64_t bytes = 0;             ///< of the transfer; 0 if unknown
    bool isZstd = false;                 ///< the transfer is packed, the stored file is not
    std::uint64_t unpackedBytes = 0;     ///< of the stored file, if it is packed; 0 if unknown
    std::optional<std::uint32_t> crc32c; ///< of the transfer
    std::string sha256; ///< of the stored file, 64 hexadecimal digits; empty if unknown
};

/// Whether an engine can use a model whose checksums match: throws ModelDamaged if not, and
/// anything else if it could not be tried. On the main queue. Empty: checksums are enough.
using ModelTrial = std::function<Task<void>(StoredModel model)>;

/// An available model: its files and the data that the store records beside them.
struct AvailableModel {
    ModelKind kind = ModelKind::speech;
    std::string name;
    std::vector<FileToFetch> files;
    std::map<std::string, std::string> details;
    ModelTrial trial{};
};

} // namespace tessarune
