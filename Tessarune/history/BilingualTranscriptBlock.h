#pragma once

#include <cstdint>
#include <string>

namespace tessarune {

/// One row of a bilingual transcript. `id` is the index of the block in the text; blocks without
/// lines are counted too.
struct BilingualTranscriptBlock {
    std::int64_t id = 0;
    std::string source;
    std::string translation; ///< has one or more lines, or is empty

    bool operator==(const BilingualTranscriptBlock&) const = default;
};

} // namespace tessarune
