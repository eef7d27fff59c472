#include "TessaruneCore/segmentation/SentenceSegmenter.h"

#include "TessaruneCore/segmentation/SentenceCuts.h"
#include "TessaruneCore/text/Text.h"

namespace tessarune::SentenceSegmenter {

std::vector<std::string> pieces(std::string_view text, bool clauseLevel, std::int64_t limit,
                                BoundaryUnit boundaryUnit) {
    SentenceCuts cuts;
    cuts.cut(text, {.sentences = !clauseLevel,
                    .clauses = clauseLevel,
                    .limit = limit,
                    .boundaryUnit = boundaryUnit});
    const auto& found = clauseLevel ? cuts.clauses() : cuts.sentences();
    return {found.begin(), found.end()};
}

Segmentation segment(std::string_view text, bool clauseLevel, std::int64_t limit,
                     BoundaryUnit boundaryUnit) {
    Segmentation result{pieces(text, clauseLevel, limit, boundaryUnit), ""};
    if (!result.leading.empty()) {
        result.live = std::move(result.leading.back());
        result.leading.pop_back();
    }
    return result;
}

bool Segmentation::operator==(const Segmentation& other) const {
    return Text::equal(leading, other.leading) && Text::equal(live, other.live);
}

} // namespace tessarune::SentenceSegmenter
