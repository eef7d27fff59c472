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

/// A file to be fetched and what it must be. At least one of the sums is needed: what nobody can
/// check is not fetched.
struct FileToFetch {
    std::string name; ///< under which it is kept
    std::string url;
    std::uint64_t bytes = 0;             ///< of what is transferred; 0 if that is unknown
    bool isZstd = false;                 ///< what is transferred is packed, what is kept is not
    std::uint64_t unpackedBytes = 0;     ///< of what is kept, if it is packed; 0 if that is unknown
    std::optional<std::uint32_t> crc32c; ///< of what is transferred
    std::string sha256; ///< of what is kept, 64 hexadecimal digits; empty if unknown
};

/// Whether an engine can use a model whose sums are right: throws ModelDamaged if not, and anything
/// else if it could not be tried. On the main queue. Empty: sums are enough.
using ModelTrial = std::function<Task<void>(StoredModel model)>;

/// A model that can be had: its files and what the store notes beside them.
struct AvailableModel {
    ModelKind kind = ModelKind::speech;
    std::string name;
    std::vector<FileToFetch> files;
    std::map<std::string, std::string> details;
    ModelTrial trial{};
};

} // namespace tessarune
