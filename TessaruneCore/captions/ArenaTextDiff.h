#pragma once

#include "TessaruneCore/UUID.h"

#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

enum class DiffType { keep, insert, remove };

/// A run of characters that were all kept, all removed or all inserted.
struct DiffToken {
    UUID id;
    DiffType type = DiffType::keep;
    std::string text;
};

/// A diff by characters, for a view that shows a correction. Pure functions; time and memory are
/// O(n·m) in the two lengths.
namespace ArenaTextDiff {

/// The edits that turn `base` into `compare`, in reading order. A removal precedes the insertion
/// that replaces it.
std::vector<DiffToken> tokens(std::string_view base, std::string_view compare,
                              const UUIDSource& newID = UUID::random);

} // namespace ArenaTextDiff

} // namespace tessarune
