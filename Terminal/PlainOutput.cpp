#include "Terminal/CaptionOutput.h"
#include "Terminal/PrintedRows.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/TextColumns.h"
#include "TessaruneCore/translation/CommittedTranslationUnitPlanner.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"

#include <memory>
#include <span>

namespace tessarune {

namespace {

/// How long a row may wait for the translation of the previous row.
constexpr double patienceSeconds = 1.0;

/// Prints lines for a file or another program. Late translations must not delay caption after
/// caption: if the translation of a row is still missing after a wait, the following rows are
/// printed at once, until no translation is missing.
class PlainPrinter : public std::enable_shared_from_this<PlainPrinter> {
  public:
    PlainPrinter(std::FILE* out, std::FILE* errors, Host& host, bool quiet)
        : out_(out), errors_(errors), host_(host), quiet_(quiet) {}

    void update(const CaptionPicture& picture) {
        rows_ = &*picture.captions.committedSegments;
        target_ = picture.target;
        awaits_ = picture.awaitsTranslations;
        print();
    }

    void status(std::string_view text) const {
        if (!quiet_)
            std::fprintf(errors_, "%s\n", Text::printable(text).c_str());
    }

    void finish(const CaptionPicture& picture) {
        update(picture);
        awaits_ = false;
        print();
        wait_.cancel();
    }

  private:
    void print() {
        const CaptionCore::Rows& rows = *rows_;
        printed_.follow(rows);
        for (;;) {
            for (const std::size_t i : printed_.news(rows))
                printOutcome(rows, i);
            const auto printed = std::span(rows).first(printed_.count());
            if (!awaits_ || !TranslationSegmentMutator::nextPendingIndex(printed))
                endWait(true);
            if (printed_.count() == rows.size())
                break;
            if (isTranslating(printed) && isPatient_) {
                beginWait();
                break;
            }
            std::fprintf(out_, "%s\n", Text::printableLine(printed_.next(rows).sourceText).c_str());
        }
        std::fflush(out_);
    }

    /// Whether a translation is in progress. Rows whose translation waits for more text do not
    /// count: the next row may be that text.
    bool isTranslating(std::span<const CaptionSegment> rows) const {
        return awaits_ && CommittedTranslationUnitPlanner::nextPendingUnit(rows);
    }

    void printOutcome(const CaptionCore::Rows& rows, std::size_t index) const {
        const CaptionSegment& row = rows[index];
        if (!row.translatedText)
            status(localized("Not translated: %@ (%@)",
                             {sourceText(unitRows(rows, index)),
                              translationFailureText(*row.translationError, target_)}));
        else if (!row.translatedText->empty())
            std::fprintf(out_, "\t%s\n", Text::printableLine(*row.translatedText).c_str());
    }

    void beginWait() {
        if (std::exchange(isWaiting_, true))
            return;
        wait_ = host_.after(patienceSeconds, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->endWait(false);
                self->print();
            }
        });
    }

    void endWait(bool mayWaitAgain) {
        wait_.cancel();
        isWaiting_ = false;
        isPatient_ = mayWaitAgain;
    }

    std::FILE* out_;
    std::FILE* errors_;
    Host& host_;
    bool quiet_;
    const CaptionCore::Rows* rows_ = nullptr; ///< the session's rows, which outlive `finish`
    std::string target_;
    bool awaits_ = false;
    PrintedRows printed_;
    DelayedCall wait_;
    bool isWaiting_ = false;
    bool isPatient_ = true; ///< rows may wait for translations
};

} // namespace

CaptionOutput makePlainOutput(std::FILE* out, std::FILE* errors, Host& host, bool quiet) {
    auto printer = std::make_shared<PlainPrinter>(out, errors, host, quiet);
    return {.update = [printer](const CaptionPicture& picture) { printer->update(picture); },
            .status = [printer](std::string_view text) { printer->status(text); },
            .progress = [](std::string_view) {}, // not in a file of captions
            .finish = [printer](const CaptionPicture& picture) { printer->finish(picture); }};
}

} // namespace tessarune
