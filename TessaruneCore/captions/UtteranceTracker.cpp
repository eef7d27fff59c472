#include "TessaruneCore/captions/UtteranceTracker.h"

#include "TessaruneCore/text/Text.h"

#include <algorithm>

namespace tessarune {

void UtteranceTracker::alignWords(std::string_view fullText, double t) {
    const std::size_t count = Text::countOfBlankSeparated(fullText);
    wordFirstSeen.resize(count, t);
    wordRevealed.resize(count);
}

std::vector<std::int64_t> UtteranceTracker::observe(std::string_view fullText,
                                                    const std::vector<std::string>& displayLeading,
                                                    std::string_view tail,
                                                    std::size_t newlyFrozenCount, double t) {
    alignWords(fullText, t);

    // Frozen sentences leave from the front, so the positions of all others shift.
    std::vector<std::int64_t> churn(newlyFrozenCount, 0);
    const auto counted =
        static_cast<std::ptrdiff_t>(std::min(newlyFrozenCount, leadingChangeCounts.size()));
    std::copy_n(leadingChangeCounts.begin(), counted, churn.begin());
    leadingChangeCounts.erase(leadingChangeCounts.begin(), leadingChangeCounts.begin() + counted);
    const auto dropped =
        static_cast<std::ptrdiff_t>(std::min(newlyFrozenCount, prevDisplayLeading.size()));
    prevDisplayLeading.erase(prevDisplayLeading.begin(), prevDisplayLeading.begin() + dropped);

    const std::size_t comparable = std::min(leadingChangeCounts.size(), prevDisplayLeading.size());
    for (std::size_t i = 0; i < std::min(comparable, displayLeading.size()); ++i) {
        if (!Text::equal(prevDisplayLeading[i], displayLeading[i]))
            ++leadingChangeCounts[i];
    }
    leadingChangeCounts.resize(displayLeading.size(), 0);
    prevDisplayLeading = displayLeading;

    if (!Text::hasPrefix(tail, prevTail))
        ++tailChangeCount;
    prevTail = tail;
    return churn;
}

} // namespace tessarune
