#include "Tessarune/session/LiveHistoryText.h"
#include "TessaruneCore/text/Text.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>

namespace tessarune {
namespace {

using Rows = std::vector<CaptionSegment>;

CaptionSegment row(std::string text) {
    CaptionSegment segment;
    segment.id = UUID::random();
    segment.sourceText = std::move(text);
    return segment;
}

/// Some texts are trimmed away, and some would combine with the end of another line.
CaptionSegment anyRow() {
    return row(*rc::gen::element<std::string>("", " \n", "One.", " two ", "\u0301x", "\u200d\u2640",
                                              "家\r", "\r", "\U0001F1E9", "\u0903"));
}

Rows anyRows(int longest) {
    Rows rows(static_cast<std::size_t>(*rc::gen::inRange(0, longest + 1)));
    std::ranges::generate(rows, anyRow);
    return rows;
}

RC_GTEST_PROP(LiveHistoryTextTests, AnIncrementalBuildEqualsACompleteOne, ()) {
    LiveHistoryText history;
    std::string text;
    Rows committed;
    const int steps = *rc::gen::inRange(1, 12);
    for (int step = 0; step < steps; ++step) {
        if (*rc::gen::inRange(0, 6) == 0)
            committed = anyRows(1); // another session
        for (CaptionSegment& segment : anyRows(3))
            committed.push_back(std::move(segment));
        const Rows leading = anyRows(1);
        const Rows soft = anyRows(1);
        const bool repeats = !committed.empty() && *rc::gen::arbitrary<bool>();
        const CaptionSegment partial = repeats ? committed.back() : anyRow();
        const SessionTranscriptBuilder::Sources sources{committed, leading, soft, partial};
        const LiveHistoryText::Built built = history.build(text, sources);
        text = built.text;
        RC_ASSERT(text == SessionTranscriptBuilder::sourceText(sources));
        RC_ASSERT(built.characters == Text::length(text));
    }
}

} // namespace
} // namespace tessarune
