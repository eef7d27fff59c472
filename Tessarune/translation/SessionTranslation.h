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
    /// The translation writes it; everyone else reads and observes.
    struct View {
        Published<std::string> ghostTranslationText; ///< the preview; empty: there is none
        std::string ghostTranslationSourceText;      ///< the source text of the preview
        Published<std::string> translationStatusMessage;
        Published<TranslationPreparationDisplayState> translationPreparationDisplayState;
    };

    SessionTranslation() = default;
    virtual ~SessionTranslation() = default;
    SessionTranslation(const SessionTranslation&) = delete;
    SessionTranslation& operator=(const SessionTranslation&) = delete;

    const View& view() const { return view_; }

    // Marks the current failure as announced, so that it is not announced again.
    void setTranslationStatusMessage(const std::string& text) {
        if (*view_.translationStatusMessage != text)
            view_.translationStatusMessage = text;
    }
    /// Stops showing which pair is being prepared.
    void setPreparationIdle() { showPreparation({}); }

    /// Called first, and once: whose captions these are. They stay valid until `shutDown`.
    virtual void attach(TranslatedCaptions&) {}
    /// Before a new session: cancels the run, forgets health, preview, status and preparation.
    virtual void resetForNewSession() {}
    /// Makes the pair of the settings ready. `reason` is for the log.
    virtual void prewarmCurrentTranslationPair(const std::string& /*reason*/) {}
    /// Rows were committed or sealed: ends a preview and starts a run for pending rows, if one can
    /// run now.
    virtual void startCommittedRun() {}
    virtual bool hasPendingTranslations() const { return false; }
    /// A committed row is being translated.
    virtual bool isCommittedTranslating() const { return false; }
    /// Called for each boundary decision: may begin a preview of the open sentence.
    virtual void pumpGhostTranslation(const BoundaryObservation&) {}
    /// Ends the preview and removes its text.
    virtual void cancelGhostTranslation() {}
    virtual void cancelCommittedTranslationTask() {}
    /// Finishes as much as possible within this time, unfinished tails included; true if nothing is
    /// left. Resumes on the main queue and never throws.
    virtual Task<bool> drainCommittedTranslationsBeforePersist(double /*timeoutSeconds*/) {
        co_return true;
    }
    /// Called after a session: cancels everything and releases the translator and its memory.
    virtual void bigCleanup() {}
    /// The session is going away: late answers are dropped from now on.
    virtual void shutDown() {}

  protected:
    void showPreparation(TranslationPreparationDisplayState state) {
        if (!(*view_.translationPreparationDisplayState == state))
            view_.translationPreparationDisplayState = std::move(state);
    }

    View view_;
};

} // namespace tessarune
