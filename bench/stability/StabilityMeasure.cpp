#include "bench/stability/StabilityMeasure.h"

#include "TessaruneCore/captions/CorrectionDiff.h"
#include "TessaruneCore/replay/CaptionReplay.h"
#include "TessaruneCore/text/Text.h"
#include "bench/stability/DisplayedWords.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace tessarune {

namespace {

/// One text, followed in both kinds of words.
class TwofoldTrace {
  public:
    void show(double time, std::string_view newlySettled, std::string_view open) {
        printed_.show(time, DisplayedWords::asPrinted(newlySettled),
                      DisplayedWords::asPrinted(open));
        spoken_.show(time, DisplayedWords::asSpoken(newlySettled), DisplayedWords::asSpoken(open));
    }

    MeasuredText measured() const {
        MeasuredText text;
        text.printed = printed_.stability();
        text.spoken = spoken_.stability();
        return text;
    }

  private:
    WordTrace printed_;
    WordTrace spoken_;
};

/// How many words of a final were settled as others, too many or not at all.
std::size_t differences(std::string_view settled, std::string_view final) {
    const auto words = [](std::string_view text) {
        return Text::joined(DisplayedWords::asSpoken(text), " ");
    };
    const auto counts = CorrectionDiff::wordCounts(words(settled), words(final));
    return static_cast<std::size_t>(std::max(counts.dropped, counts.added));
}

std::string liveText(const CaptionCore& core) {
    std::vector<std::string> parts;
    for (const auto* rows : {&core.liveLeadingSentences, &core.softCaptionSegments}) {
        for (const CaptionSegment& row : **rows)
            parts.push_back(row.sourceText);
    }
    parts.push_back(core.currentPartial->sourceText);
    return Text::joined(parts, " ");
}

/// The texts of the finals that say something, in order.
std::vector<std::string_view> finals(const std::vector<ASREventRecord>& records) {
    std::vector<std::string_view> texts;
    for (const ASREventRecord& record : records) {
        if (record.kind == "final" && !Text::trimmed(record.text).empty())
            texts.push_back(record.text);
    }
    return texts;
}

/// Watches the captions of a replay.
class CaptionWatch {
  public:
    explicit CaptionWatch(std::vector<std::string_view> finals) : finals_(std::move(finals)) {}

    void look(const CaptionCore& core, CaptionCore::Activity activity, double t) {
        std::string settled;
        const CaptionCore::Rows& rows = *core.committedSegments;
        for (; seenRows_ < rows.size(); ++seenRows_)
            settled += rows[seenRows_].sourceText + " ";
        trace_.show(t, settled, liveText(core));
        sinceFinal_ += settled;
        if (activity != CaptionCore::Activity::finalApplied)
            return;
        unlike_ += differences(sinceFinal_, finals_[seenFinals_++]);
        sinceFinal_.clear();
    }

    MeasuredText measured() const {
        MeasuredText text = trace_.measured();
        text.unlike = unlike_;
        for (const std::string_view final : finals_)
            text.finalWords += DisplayedWords::asSpoken(final).size();
        return text;
    }

  private:
    std::vector<std::string_view> finals_;
    TwofoldTrace trace_;
    std::size_t seenRows_ = 0;
    std::size_t seenFinals_ = 0;
    std::string sinceFinal_; ///< what was committed since the last final
    std::size_t unlike_ = 0;
};

} // namespace

void MeasuredText::add(const MeasuredText& other) {
    printed.add(other.printed);
    spoken.add(other.spoken);
    finalWords += other.finalWords;
    unlike += other.unlike;
}

double MeasuredText::unlikeShare() const {
    return finalWords == 0 ? 0 : static_cast<double>(unlike) / static_cast<double>(finalWords);
}

MeasuredText StabilityMeasure::ofRecogniser(const std::vector<ASREventRecord>& records) {
    TwofoldTrace trace;
    std::size_t finalWords = 0;
    for (const ASREventRecord& record : records) {
        if (Text::trimmed(record.text).empty())
            continue;
        if (record.kind == "partial") {
            trace.show(record.t, "", record.text);
        } else if (record.kind == "final") {
            trace.show(record.t, record.text, "");
            finalWords += DisplayedWords::asSpoken(record.text).size();
        }
    }
    MeasuredText text = trace.measured();
    text.finalWords = finalWords;
    return text;
}

MeasuredText StabilityMeasure::ofCaptions(const std::vector<ASREventRecord>& records,
                                          const CaptionCore::Config& config,
                                          const EngineCapabilities& caps) {
    CaptionWatch watch(finals(records));
    CaptionReplay::run(records, config, caps,
                       [&](const CaptionCore& core, CaptionCore::Activity activity, double t) {
                           watch.look(core, activity, t);
                       });
    return watch.measured();
}

} // namespace tessarune
