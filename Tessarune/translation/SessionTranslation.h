#pragma once

#include "Tessarune/translation/TranslatedCaptions.h"
#include "Tessarune/translation/TranslationLanguagePreparation.h"
#include "TessaruneCore/captions/BoundaryObservation.h"
#include "TessaruneCore/host/Task.h"
#include "TessaruneCore/observation/Published.h"

#include <string>
#include <utility>

namespace tessarune {

/// What a session asks of the translation of its captions, and what views show of it. As it stands
/// here, nothing is translated. Main queue.
class SessionTranslation {
  public:
    /// The translation writes it; everybody else reads and observes.
    struct View {
        Published<std::string> ghostTranslationText; ///< the preview; empty: there is none
        std::string ghostTranslationSourceText;      ///< the text that it is of
        Published<std::string> translationStatusMessage;
        Published<TranslationPreparationDisplayState> translationPreparationDisplayState;
    };

    SessionTranslation() = default;
    virtual ~SessionTranslation() = default;
    SessionTranslation(const SessionTranslation&) = delete;
    SessionTranslation& operator=(const SessionTranslation&) = delete;

    const View& view() const { return view_; }

    // What is said already is not announced again.
    void setTranslationStatusMessage(const std::string& text) {
        if (*view_.translationStatusMessage != text)
            view_.translationStatusMessage = text;
    }
    /// What is being prepared is no longer shown.
    void setPreparationIdle() { showPreparation({}); }

    /// First of all, and once: whose captions these are. They stay valid until `shutDown`.
    virtual void attach(TranslatedCaptions&) {}
    /// Before a new session: cancels the run, forgets health, preview, status and preparation.
    virtual void resetForNewSession() {}
    /// Makes the pair that the settings name ready. `reason` is for the log.
    virtual void prewarmCurrentTranslationPair(const std::string& /*reason*/) {}
    /// Rows were committed or sealed: ends a preview and starts a run for what waits, if one can
    /// run now.
    virtual void startCommittedRun() {}
    virtual bool hasPendingTranslations() const { return false; }
    /// A committed row is being translated at this moment.
    virtual bool isCommittedTranslating() const { return false; }
    /// For each boundary decision: may begin a preview of the open sentence.
    virtual void pumpGhostTranslation(const BoundaryObservation&) {}
    /// Ends the preview and takes its text away.
    virtual void cancelGhostTranslation() {}
    virtual void cancelCommittedTranslationTask() {}
    /// Finishes what can be finished in this time, unfinished tails included; true if nothing is
    /// left. Resumes on the main queue and never throws.
    virtual Task<bool> drainCommittedTranslationsBeforePersist(double /*timeoutSeconds*/) {
        co_return true;
    }
    /// After a session: cancels everything and lets the translator and its memory go.
    virtual void bigCleanup() {}
    /// The session goes away for good: what answers late finds nobody.
    virtual void shutDown() {}

  protected:
    void showPreparation(TranslationPreparationDisplayState state) {
        if (!(*view_.translationPreparationDisplayState == state))
            view_.translationPreparationDisplayState = std::move(state);
    }

    View view_;
};

} // namespace tessarune
