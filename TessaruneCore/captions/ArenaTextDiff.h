#pragma once

#include "TessaruneCore/UUID.h"

#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

enum class DiffType { keep, insert, remove };

/// A run of characters with the same fate.
struct DiffToken {
    UUID id;
    DiffType type = DiffType::keep;
    std::string text;
};

/// A diff by characters, for a view that shows a correction. Pure functions; time and memory grow
/// with the product of the two lengths.
namespace ArenaTextDiff {

/// What became of `base` in `compare`, in reading order; a removal stands before the insertion that
/// replaces it.
std::vector<DiffToken> tokens(std::string_view base, std::string_view compare,
                              const UUIDSource& newID = UUID::random);

} // namespace ArenaTextDiff

} // namespace tessarune
