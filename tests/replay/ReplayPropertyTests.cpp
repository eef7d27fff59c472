// Properties of every log, on random recognisers whose texts grow, change, restart and repeat
// themselves.
#include "TessaruneCore/replay/CaptionReplay.h"
#include "TessaruneCore/segmentation/SentenceSegmenter.h"
#include "TessaruneCore/segmentation/SentenceStabilityKey.h"
#include "TessaruneCore/text/Text.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace tessarune {
namespace {

using Log = std::vector<ASREventRecord>;
using Words = std::vector<std::string>;

/// More than the 0.06 s for which a partial may be held back. After such a pause no partial is
/// pending, so a log that ends there has the same result as the whole log up to that time.
constexpr double quiet = 0.0625;

rc::Gen<std::string> word() {
    const auto stem = rc::gen::element<std::string>("the", "sea", "is", "calm", "No", "Dr", "3.5",
                                                    "we", "went", "home", "today", "今天", "天气",
                                                    "很好", "海", "e\u0301t\u00e9");
    const auto end = rc::gen::weightedElement<std::string>({{10, ""},
                                                            {3, "."},
                                                            {2, ","},
                                                            {1, "?"},
                                                            {1, "!”"},
                                                            {1, "。"},
                                                            {1, "，"},
                                                            {1, "；"},
                                                            {1, "..."}});
    return rc::gen::map(rc::gen::pair(stem, end),
                        [](const auto& parts) { return parts.first + parts.second; });
}

std::string text(const Words& words, std::size_t from, std::size_t to) {
    std::string joined;
    for (std::size_t i = from; i < to; ++i) {
        // No blank separates two Chinese words.
        if (i > from && !(Text::containsCJK(words[i - 1]) && Text::containsCJK(words[i])))
            joined += ' ';
        joined += words[i];
    }
    return joined;
}

double pause() {
    return *rc::gen::weightedElement<double>(
        {{1, 0.0}, {2, 0.03125}, {6, 0.25}, {3, 0.4375}, {3, 0.75}, {1, 4.25}});
}

/// One utterance: partials that mostly grow, and mostly a final.
void speak(Log& log, double& t, const Words& earlier) {
    Words words = *rc::gen::resize(14, rc::gen::container<Words>(word()));
    if (*rc::gen::weightedElement<bool>({{3, false}, {1, true}}))
        words.insert(words.begin(), earlier.begin(), earlier.end());
    std::size_t from = 0;
    std::size_t to = 0;
    while (to < words.size()) {
        to = std::min(words.size(), to + *rc::gen::inRange<std::size_t>(0, 5));
        if (*rc::gen::weightedElement<bool>({{7, false}, {1, true}}) && to > 0)
            words[*rc::gen::inRange<std::size_t>(0, to)] = *word();
        if (*rc::gen::weightedElement<bool>({{9, false}, {1, true}}))
            from = *rc::gen::inRange<std::size_t>(0, to + 1);
        std::string guess = text(words, from, to);
        if (*rc::gen::weightedElement<bool>({{2, false}, {1, true}}) && !guess.empty())
            guess = Text::prefix(guess, Text::length(guess) - 1); // in the middle of a word
        t += pause();
        log.emplace_back(t, ASREvent::partial(std::move(guess), 0, t));
    }
    if (*rc::gen::weightedElement<bool>({{3, true}, {1, false}})) {
        t += pause();
        log.emplace_back(
            t, ASREvent::final(text(words, 0, words.size()), t - 1, t, EndpointReason::silence));
    }
}

rc::Gen<Log> logs() {
    // With the default growing size, the first half of the logs would be almost empty.
    return rc::gen::resize(100, rc::gen::exec([] {
                               Log log;
                               double t = 1000;
                               const Words refrain =
                                   *rc::gen::resize(5, rc::gen::container<Words>(word()));
                               const int utterances = *rc::gen::inRange(1, 6);
                               for (int i = 0; i < utterances; ++i)
                                   speak(log, t, refrain);
                               return log;
                           }));
}

struct Settings {
    CaptionCore::Config config{true, true, true};
    EngineCapabilities caps;
};

Settings settings(bool selfSegments) {
    Settings result;
    result.config.clauseLevel = *rc::gen::arbitrary<bool>();
    result.config.freezeStableSeconds = *rc::gen::element(0.0, 0.3, 0.6);
    result.caps.punctuatesNatively = true;
    result.caps.selfSegments = selfSegments;
    return result;
}

CaptionReplay::Output replay(const Log& log, const Settings& with) {
    return CaptionReplay::run(log, with.config, with.caps);
}

Log prefix(const Log& log, std::size_t count) {
    return {log.begin(), log.begin() + static_cast<std::ptrdiff_t>(count)};
}

bool startsWith(const std::vector<std::string>& all, const std::vector<std::string>& start) {
    return start.size() <= all.size() && std::equal(start.begin(), start.end(), all.begin());
}

/// Whether the record at `index` finds nothing pending.
bool comesAfterQuiet(const Log& log, std::size_t index) {
    return index == 0 || index == log.size() || log[index].t - log[index - 1].t >= quiet;
}

std::string withoutWhiteSpace(const std::vector<std::string>& texts) {
    std::string result;
    for (const std::string& one : texts)
        for (const std::string_view character : Text::characters(one))
            if (!Text::isWhiteSpace(character))
                result += character;
    return result;
}

std::vector<std::string> sources(const CaptionReplay::Output& output, std::size_t from = 0) {
    std::vector<std::string> texts;
    for (std::size_t i = from; i < output.segments.size(); ++i)
        texts.push_back(output.segments[i].sourceText);
    return texts;
}

std::string describe(const Log& log) {
    std::string lines;
    for (const ASREventRecord& record : log)
        lines += Text::shortest(record.t) + " " + record.kind + " \"" + record.text + "\"\n";
    return lines;
}

RC_GTEST_PROP(ReplayProperties, noCommittedRowIsEverReopenedOrLost, ()) {
    const Log log = *logs();
    const Settings with = settings(false);
    const auto whole = replay(log, with);
    for (std::size_t count = 0; count <= log.size(); ++count) {
        const auto part = replay(prefix(log, count), with);
        RC_ASSERT(part.lockCount + part.finalCount ==
                  static_cast<std::int64_t>(part.committedLines.size()));
        if (comesAfterQuiet(log, count) && !startsWith(whole.committedLines, part.committedLines)) {
            RC_LOG() << describe(log);
            RC_FAIL("rows committed by " + std::to_string(count) + " records changed later:\n" +
                    part.transcript() + "\n--\n" + whole.transcript());
        }
    }
}

RC_GTEST_PROP(ReplayProperties, aFinalAddsEveryPieceThatIsNotCommittedYet, ()) {
    const Log log = *logs();
    const Settings with = settings(false);
    for (std::size_t i = 0; i < log.size(); ++i) {
        if (log[i].kind != "final" || !comesAfterQuiet(log, i))
            continue;
        const auto before = replay(prefix(log, i), with);
        const auto after = replay(prefix(log, i + 1), with);
        const auto added = sources(after, before.segments.size());
        const auto pieces =
            SentenceSegmenter::pieces(Text::trimmed(log[i].text), with.config.clauseLevel);
        RC_ASSERT(added.size() <= pieces.size());
        const std::size_t skipped = pieces.size() - added.size();
        RC_ASSERT(std::equal(added.begin(), added.end(),
                             pieces.begin() + static_cast<std::ptrdiff_t>(skipped)));

        const auto keys = SentenceStabilityKey::normalize(sources(before));
        const std::set<std::string> committed(keys.begin(), keys.end());
        for (std::size_t k = 0; k < skipped; ++k)
            if (!committed.count(SentenceStabilityKey::normalize(pieces[k]))) {
                RC_LOG() << describe(prefix(log, i + 1));
                RC_FAIL("\"" + pieces[k] + "\" of the last final is not committed");
            }
    }
}

RC_GTEST_PROP(ReplayProperties, withoutFreezingEveryCharacterIsShownOnce, ()) {
    const Log log = *logs();
    const Settings with = settings(true);
    const auto output = replay(log, with);

    std::vector<std::string> finals;
    std::string open;
    for (const ASREventRecord& record : log) {
        if (Text::trimmed(record.text).empty())
            continue;
        open = record.text;
        if (record.kind == "final") {
            finals.push_back(record.text);
            open.clear();
        }
    }
    RC_LOG() << describe(log) << output.transcript();
    RC_ASSERT(withoutWhiteSpace(sources(output)) == withoutWhiteSpace(finals));
    RC_ASSERT(withoutWhiteSpace(output.liveLines) == withoutWhiteSpace({open}));
    // The engine reuses the cuts of the previous partial; here the text is cut from scratch.
    if (with.config.clauseLevel)
        RC_ASSERT(output.liveLines == SentenceSegmenter::pieces(open, true));
}

} // namespace
} // namespace tessarune
