// An engine that reuses the cuts of earlier texts decides the same pieces as one that cuts every
// text from scratch.
#include "TessaruneCore/segmentation/HeuristicBoundaryEngine.h"
#include "TessaruneCore/segmentation/SentenceSegmenter.h"
#include "TessaruneCore/segmentation/SentenceStabilityKey.h"
#include "TessaruneCore/text/Text.h"
#include "tests/fuzz/Fuzz.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

using namespace tessarune;
using Texts = std::vector<std::string>;

Texts pieces(std::string_view text, bool clauses, const BoundaryContext& context) {
    return SentenceSegmenter::pieces(text, clauses, context.maxUnpunctuatedWords,
                                     context.boundaryUnit);
}

Texts clausesWithout(std::string_view text, const Texts& excluded, const BoundaryContext& context) {
    Texts clauses = pieces(text, true, context);
    if (!clauses.empty())
        clauses.pop_back();
    const Texts keys = SentenceStabilityKey::normalize(excluded);
    std::erase_if(clauses, [&](const std::string& clause) {
        return std::find(keys.begin(), keys.end(), SentenceStabilityKey::normalize(clause)) !=
               keys.end();
    });
    return clauses;
}

void checkPartial(HeuristicBoundaryEngine& engine, std::string_view text,
                  const BoundaryContext& context, double now) {
    const BoundaryDecision decision = engine.ingestPartial(text, context, now);
    Texts fixedAndLeading = decision.hardPieces;
    fixedAndLeading.insert(fixedAndLeading.end(), decision.leading.begin(), decision.leading.end());
    fuzz::require(decision.softPieces == clausesWithout(text, fixedAndLeading, context),
                  "other clauses than those cut from scratch");

    const Texts all = pieces(text, context.clauseLevel, context);
    fuzz::require(decision.tail == (all.empty() ? "" : all.back()), "a wrong tail");
    if (all.empty())
        return;
    // `all` begins with the sentences frozen earlier.
    fuzz::require(fixedAndLeading.size() < all.size(), "more pieces than the text has");
    fuzz::require(std::equal(fixedAndLeading.begin(), fixedAndLeading.end(),
                             all.end() - 1 - std::ssize(fixedAndLeading)),
                  "other pieces than those cut from scratch");
    if (!context.freeze)
        fuzz::require(fixedAndLeading.size() + 1 == all.size(), "a piece lost");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::uint8_t options = input.byte();
    BoundaryContext context;
    context.segment = true;
    context.softClauseLevel = true;
    context.freeze = (options & 1) != 0;
    context.boundaryUnit = (options & 2) != 0 ? BoundaryUnit::characters : BoundaryUnit::words;
    context.maxUnpunctuatedWords = options / 8;

    HeuristicBoundaryEngine engine;
    std::string text;
    for (double now = 0; !input.rest().empty() && now < 40; ++now) {
        // Like a recogniser: keep a prefix of the previous text and append to it.
        const std::uint8_t how = input.byte();
        context.clauseLevel = (how & 1) != 0;
        const std::size_t kept = std::min<std::size_t>(text.size(), input.byte());
        text = std::string(Text::prefix(text, kept)) + input.line();
        checkPartial(engine, text, context, now);
    }
    return 0;
}
