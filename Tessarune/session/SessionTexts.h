#pragma once

#include "Tessarune/history/HistoryWordTimeline.h"
#include "Tessarune/session/LiveCaptionMessage.h"
#include "Tessarune/session/LiveCaptionPerfCounters.h"
#include "Tessarune/session/LiveHistoryText.h"
#include "Tessarune/session/SessionView.h"
#include "Tessarune/session/TranscriptSnapshot.h"
#include "TessaruneCore/CaptionCore.h"

#include <cstddef>
#include <optional>
#include <string>

namespace tessarune {

/// Makes the texts of the running session from its captions: the texts to save, the text to copy,
/// and the history text, which grows during the session. Main queue; the references outlive it.
class SessionTexts {
  public:
    SessionTexts(const Host& host, const CaptionCore& core, const LiveCaptionMessage& message,
                 SessionView& view, LiveCaptionPerfCounters& perf)
        : host_(host), core_(core), message_(message), view_(view), perf_(perf) {}

    void beginSession();

    /// Call when another recogniser takes over within the session, before the captions are emptied.
    /// What was said until then stays in the saved texts.
    void keepSaid();

    /// The texts of all captions, including the open sentence.
    TranscriptSnapshot exportTranscriptSnapshot() const;
    /// The texts without the rows that the user cleared.
    TranscriptSnapshot visibleText() const;
    /// Clears all rows from the screen, except an open row without text: later speech will appear
    /// in it.
    void clear();

    /// The texts of the whole session to save; the bilingual one is empty if no row is translated.
    TranscriptSnapshot savedTexts() const;
    /// The texts since the captions were last emptied, for the diagnostics run that began then.
    TranscriptSnapshot runTexts() const;
    /// The word times of the whole session; `nullopt` without a recording or if no row has text.
    std::optional<HistoryWordTimeline> savedTimeline(std::optional<double> recordingStartedAt,
                                                     const std::string& recognitionOptionID) const;
    /// Call with each save.
    void noteSaved() { savedTranslations_ = translatedCount(); }
    /// If true, the saved text should stay: it contains translations that were removed from the
    /// captions and have not been replaced yet.
    bool hasFewerTranslationsThanSaved() const { return translatedCount() < savedTranslations_; }

    void updateVisibleSourceTextFlag();
    /// Updates the history text at most once a second, unless `force` is set or the text is empty.
    void updateLiveHistoryTextIfNeeded(bool force);

  private:
    std::size_t translatedCount() const;
    CaptionCore::Rows committedInSession() const;

    const Host& host_;
    const CaptionCore& core_;
    const LiveCaptionMessage& message_;
    SessionView& view_;
    LiveCaptionPerfCounters& perf_;
    LiveHistoryText liveHistory_;
    CaptionCore::Rows said_; // rows from before the captions were last emptied
    HistoryWordTimeline::WordEvents saidWords_;
    std::size_t savedTranslations_ = 0; // translated rows at the last save
};

} // namespace tessarune
