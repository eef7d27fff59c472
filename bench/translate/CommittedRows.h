#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/translation/LiveTranscriptTranslation.h"
#include "Tessarune/translation/TranslationService.h"
#include "TessaruneCore/host/OneShot.h"
#include "tests/support/MemoryUserDefaults.h"

#include <memory>
#include <string>
#include <vector>

namespace tessarune {

/// The translation half of a session. Commits rows one by one, each in place of the previous row,
/// and measures the stages of each translation into Brazilian Portuguese. Main queue.
class CommittedRows final : TranslatedCaptions {
  public:
    CommittedRows(Host& host, std::shared_ptr<TranslationService> service);
    ~CommittedRows() override;
    CommittedRows(const CommittedRows&) = delete;

    /// Commits a row and returns the translation that the row receives.
    Task<std::string> commit(std::string text);

    /// Times in seconds, one for each row.
    struct Stages {
        std::vector<double> queue;        ///< from the commit to the start of the row's unit
        std::vector<double> availability; ///< the check whether the pair is available
        std::vector<double> engine;       ///< the call of the translator
        std::vector<double> apply;        ///< from the translator's result until the row has it
    };
    const Stages& stages() const { return stages_; }

  private:
    const std::vector<CaptionSegment>& committedSegments() const override { return rows_; }
    void
    changeCommittedSegments(const std::function<void(std::span<CaptionSegment>)>& change) override {
        change(rows_);
    }
    void setStatusMessage(const std::string&) override {}
    void refreshCaptionDisplay(const std::string& reason,
                               const LiveCaptionDisplayTranslationPatch* patch) override;
    void updatePersistedTranscriptIfStopped() override {}
    void appendTranslationObservation(const TranslationObservation& observation) override;

    Host& host_;
    testing::MemoryUserDefaults defaults_;
    AppSettings settings_{defaults_};
    std::vector<CaptionSegment> rows_;
    std::shared_ptr<LiveTranscriptTranslation> translation_;
    OneShot<bool> translated_; ///< resumed when the row has its translation
    Stages stages_;
    double committedAt_ = 0;
    double startedAt_ = 0; ///< when the unit of the row was started
};

} // namespace tessarune
