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
    std::string name; ///< of the stored file
    std::string url;
    std::uint64_t bytes = 0;             ///< size of the transfer; 0 if unknown
    bool isZstd = false;                 ///< packed for the transfer only; stored unpacked
    std::uint64_t unpackedBytes = 0;     ///< size of the stored file if `isZstd`; 0 if unknown
    std::optional<std::uint32_t> crc32c; ///< of the transfer
    std::string sha256; ///< of the stored file, 64 hexadecimal digits; empty if unknown
};

/// Tests whether an engine can use a model whose checksums match. Throws ModelDamaged if not, and
/// another exception if the test itself fails. Runs on the main queue. An empty trial accepts every
/// model whose checksums match.
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
