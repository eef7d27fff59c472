#pragma once

#include "Tessarune/session/LiveCaptionMessage.h"
#include "Tessarune/session/LiveCaptionPerfCounters.h"
#include "Tessarune/session/LiveHistoryText.h"
#include "Tessarune/session/SessionView.h"
#include "Tessarune/session/TranscriptSnapshot.h"
#include "TessaruneCore/CaptionCore.h"

#include <cstddef>

namespace tessarune {

/// The texts of the running session, made from its captions: the saved ones, the one that a user
/// copies, and the one that grows beside the captions. Main queue; the references outlive it.
class SessionTexts {
  public:
    SessionTexts(const Host& host, const CaptionCore& core, const LiveCaptionMessage& message,
                 SessionView& view, LiveCaptionPerfCounters& perf)
        : host_(host), core_(core), message_(message), view_(view), perf_(perf) {}

    void beginSession();

    /// All text, the open sentence included.
    TranscriptSnapshot exportTranscriptSnapshot() const;
    /// Without the rows that the user cleared.
    TranscriptSnapshot visibleText() const;
    /// Clears all rows with a text from the screen. Rows still without one belong to later speech.
    void clear();

    /// In their saved form: a text without any translation has no bilingual form.
    TranscriptSnapshot savedTexts() const;
    /// To be called with each save.
    void noteSaved() { savedTranslations_ = translatedCount(); }
    /// Removed translations stay in the saved text until others have replaced them.
    bool hasFewerTranslationsThanSaved() const { return translatedCount() < savedTranslations_; }

    void updateVisibleSourceTextFlag();
    /// At most once a second, unless it is forced.
    void updateLiveHistoryTextIfNeeded(bool force);

  private:
    std::size_t translatedCount() const;

    const Host& host_;
    const CaptionCore& core_;
    const LiveCaptionMessage& message_;
    SessionView& view_;
    LiveCaptionPerfCounters& perf_;
    LiveHistoryText liveHistory_;
    std::size_t savedTranslations_ = 0; // rows that had one when they were saved
};

} // namespace tessarune
