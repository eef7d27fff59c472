#include "TessaruneCore/captions/ArenaTextDiff.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tessarune::ArenaTextDiff {

namespace {

using Characters = std::vector<std::string_view>;

/// Lengths of the longest common subsequences of all pairs of prefixes of two texts.
class Table {
  public:
    Table(const Characters& a, const Characters& b)
        : width_(b.size() + 1), lengths_((a.size() + 1) * width_, 0) {
        for (std::size_t i = 1; i <= a.size(); ++i) {
            for (std::size_t j = 1; j <= b.size(); ++j)
                at(i, j) = Text::equal(a[i - 1], b[j - 1]) ? at(i - 1, j - 1) + 1
                                                           : std::max(at(i - 1, j), at(i, j - 1));
        }
    }

    std::uint32_t& at(std::size_t i, std::size_t j) { return lengths_[i * width_ + j]; }

  private:
    std::size_t width_;
    std::vector<std::uint32_t> lengths_;
};

struct Step {
    DiffType type;
    std::string_view character;
};

/// Walks the table from the end of both texts to their beginning.
std::vector<Step> stepsBackwards(const Characters& a, const Characters& b) {
    Table table(a, b);
    std::vector<Step> steps;
    std::size_t i = a.size();
    std::size_t j = b.size();
    while (i > 0 || j > 0) {
        if (i > 0 && j > 0 && Text::equal(a[i - 1], b[j - 1])) {
            steps.push_back({DiffType::keep, a[--i]});
            --j;
        } else if (j > 0 && (i == 0 || table.at(i, j - 1) >= table.at(i - 1, j))) {
            steps.push_back({DiffType::insert, b[--j]});
        } else {
            steps.push_back({DiffType::remove, a[--i]});
        }
    }
    return steps;
}

} // namespace

std::vector<DiffToken> tokens(std::string_view base, std::string_view compare,
                              const UUIDSource& newID) {
    const std::vector<Step> steps =
        stepsBackwards(Text::characters(base), Text::characters(compare));
    std::vector<DiffToken> tokens;
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        if (tokens.empty() || tokens.back().type != step->type)
            tokens.push_back({newID(), step->type, ""});
        tokens.back().text += step->character;
    }
    return tokens;
}

} // namespace tessarune::ArenaTextDiff
