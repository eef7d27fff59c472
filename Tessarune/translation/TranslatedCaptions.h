#pragma once

#include "Tessarune/translation/TranslationObservation.h"
#include "TessaruneCore/captions/CaptionSegment.h"
#include "TessaruneCore/translation/LiveCaptionDisplayTranslationPatch.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace tessarune {

/// The part of a session that the translation of its captions uses: the committed rows, and
/// functions to report changes. Called on the main queue.
class TranslatedCaptions {
  public:
    virtual ~TranslatedCaptions() = default;
    virtual const std::vector<CaptionSegment>& committedSegments() const = 0;
    /// Lets `change` modify the translation fields of the committed rows, as one change.
    virtual void
    changeCommittedSegments(const std::function<void(std::span<CaptionSegment>)>& change) = 0;
    /// The session's general status line.
    virtual void setStatusMessage(const std::string& text) = 0;
    /// `patch` is null unless exactly one unit was translated or failed.
    virtual void refreshCaptionDisplay(const std::string& reason,
                                       const LiveCaptionDisplayTranslationPatch* patch) = 0;
    /// Called when translations have changed: updates the saved transcript if the session has
    /// stopped.
    virtual void updatePersistedTranscriptIfStopped() = 0;
    /// Drops the observation if no translation log is open.
    virtual void appendTranslationObservation(const TranslationObservation& observation) = 0;
    /// Whether there is an open diagnostics run and the user allows it to keep texts.
    virtual bool keepsTextsForDiagnosis() const { return false; }
};

} // namespace tessarune
