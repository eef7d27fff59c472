#pragma once

#include "Tessarune/translation/TranslatedCaptions.h"
#include "Tessarune/translation/TranslationLanguagePreparation.h"
#include "TessaruneCore/captions/BoundaryObservation.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/observation/Published.h"

#include <string>
#include <utility>

namespace tessarune {

/// The operations that a session calls on the translation of its captions, and the state that views
/// show. This base class translates nothing. Main queue.
class SessionTranslation {
  public:
    /// Written by the translation only; views read and observe it.
    struct View {
        Published<std::string> ghostTranslationText; ///< the preview, or empty
        std::string ghostTranslationSourceText;      ///< the source text of the preview
        Published<std::string> translationStatusMessage;
        Published<TranslationPreparationDisplayState> translationPreparationDisplayState;
    };

    SessionTranslation() = default;
    virtual ~SessionTranslation() = default;
    SessionTranslation(const SessionTranslation&) = delete;
    SessionTranslation& operator=(const SessionTranslation&) = delete;

    const View& view() const { return view_; }

    /// Observers are notified only if the text differs from the current one.
    void setTranslationStatusMessage(const std::string& text) {
        if (*view_.translationStatusMessage != text)
            view_.translationStatusMessage = text;
    }
    /// Shows that no pair is being prepared.
    void setPreparationIdle() { showPreparation({}); }

    /// Called once, before all other functions, with the session's captions, which stay valid until
    /// `shutDown`.
    virtual void attach(TranslatedCaptions&) {}
    /// Called before a new session. Cancels the translation in progress, and resets the count of
    /// failures, the preview, the status and the display of a preparation.
    virtual void resetForNewSession() {}
    /// Prepares the pair chosen in the settings. `reason` is for the log.
    virtual void prewarmCurrentTranslationPair(const std::string& /*reason*/) {}
    /// Called when rows were committed or sealed: ends a preview and starts a run for pending rows,
    /// if possible.
    virtual void startCommittedRun() {}
    virtual bool hasPendingTranslations() const { return false; }
    /// Whether a run of committed translations is in progress.
    virtual bool isCommittedTranslating() const { return false; }
    /// Called for each boundary decision: may start a preview of a sentence that is not committed.
    virtual void pumpGhostTranslation(const BoundaryObservation&) {}
    /// Ends the preview and removes its text.
    virtual void cancelGhostTranslation() {}
    virtual void cancelCommittedTranslationTask() {}
    /// Translates all pending rows, including unfinished units, for at most this time. Returns true
    /// if none remains pending or translation is off. Resumes on the main queue and never throws.
    virtual Task<bool> drainCommittedTranslationsBeforePersist(double /*timeoutSeconds*/) {
        co_return true;
    }
    /// Called after a session: cancels everything and releases the translator and its memory.
    virtual void bigCleanup() {}
    /// Called before the session is destroyed: late answers are dropped from then on.
    virtual void shutDown() {}

  protected:
    void showPreparation(TranslationPreparationDisplayState state) {
        if (!(*view_.translationPreparationDisplayState == state))
            view_.translationPreparationDisplayState = std::move(state);
    }

    View view_;
};

} // namespace tessarune
