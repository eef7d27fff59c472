#pragma once

#include <cstdint>
#include <string>

namespace tessarune {

/// One row of a bilingual transcript. `id` counts the blocks of the text, those without lines too.
struct BilingualTranscriptBlock {
    std::int64_t id = 0;
    std::string source;
    std::string translation; ///< of one or more lines; may be empty

    bool operator==(const BilingualTranscriptBlock&) const = default;
};

} // namespace tessarune
