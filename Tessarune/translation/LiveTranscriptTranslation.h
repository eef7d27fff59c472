#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/translation/CommittedTranslationRunPreparer.h"
#include "Tessarune/translation/CommittedTranslationUnitProcessor.h"
#include "Tessarune/translation/LiveTranslationRuntime.h"
#include "Tessarune/translation/LiveTranslationSettingsSnapshot.h"
#include "Tessarune/translation/TranslationObservation.h"
#include "TessaruneCore/captions/BoundaryObservation.h"
#include "TessaruneCore/captions/CaptionSegment.h"
#include "TessaruneCore/observation/Published.h"
#include "TessaruneCore/translation/LiveCaptionDisplayTranslationPatch.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tessarune {

/// What the translation half of a session needs of the session that owns the captions. Called on
/// the main queue, and not after `shutDown`.
struct LiveTranscriptTranslationAccess {
    std::function<const std::vector<CaptionSegment>&()> committedSegments;
    /// Changes translation fields of the committed rows, as one change.
    std::function<void(const std::function<void(std::span<CaptionSegment>)>& change)>
        changeCommittedSegments;
    /// The session's general status line.
    std::function<void(std::string text)> setStatusMessage;
    /// `patch` is null unless exactly one unit got its translation.
    std::function<void(const std::string& reason, const LiveCaptionDisplayTranslationPatch* patch)>
        refreshCaptionDisplay;
    /// A translation that comes after the stop still reaches the saved transcript.
    std::function<void()> updatePersistedTranscriptIfStopped;
    /// Drops the observation where no translation log is open.
    std::function<void(const TranslationObservation&)> appendTranslationObservation;
};

/// The translation half of a live session: starts runs of committed translations and previews,
/// prepares language pairs, writes outcomes into the caption rows, and says what is going on.
///
/// Main queue, for the life of the process. Made with `std::make_shared`; whoever owns the captions
/// calls `shutDown` before it goes away, after which late answers find nobody.
class LiveTranscriptTranslation : public std::enable_shared_from_this<LiveTranscriptTranslation> {
  public:
    LiveTranscriptTranslation(std::shared_ptr<LiveTranslationRuntime> runtime,
                              AppSettings& settings, LiveTranscriptTranslationAccess access);
    LiveTranscriptTranslation(const LiveTranscriptTranslation&) = delete;

    LiveTranslationRuntime& runtime() { return *runtime_; }

    // What views show; others only read and observe it
    Published<std::string>& ghostTranslationText() { return ghostTranslationText_; }
    Published<std::string>& translationStatusMessage() { return translationStatusMessage_; }
    Published<TranslationPreparationDisplayState>& preparationDisplayState() {
        return preparationDisplayState_;
    }
    bool isCommittedTranslating() const { return runtime_->hasCommittedTask(); }
    bool isGhostTranslating() const { return runtime_->hasGhostTask(); }
    bool hasPendingTranslations() const;
    void setTranslationStatusMessage(std::string text) {
        translationStatusMessage_ = std::move(text);
    }
    void setPreparationIdle() { preparationDisplayState_ = TranslationPreparationDisplayState(); }

    // Runs of committed translations

    /// Cancels a preview, prepares the context and starts a run if there is one: after a commit,
    /// after sealing, and whenever something may translate now.
    void startCommittedRun();
    std::optional<TranslationRunContext> prepareCommittedTranslationRunContext();
    void startCommittedTranslationTask(const TranslationRunContext& context, bool forceTail);
    void cancelCommittedTranslationTask();
    /// The user's retry; also after a successful test of the pair in the settings.
    void retryIncompleteTranslations();

    // Language preparation

    /// Ahead of a session and at each run. `reason` is for the log.
    void prewarmCurrentTranslationPair(const std::string& reason);

    // Previews

    /// For every boundary decision; cheap unless there is a new candidate.
    void pumpGhostTranslation(const BoundaryObservation& observation);
    /// Ends the preview and takes its text away.
    void cancelGhostTranslation();
    /// Ends the preview and leaves its text.
    void cancelGhostTranslationTask() { runtime_->cancelGhostTask(); }

    // Settings

    /// To be called when the target or the backend was changed by whatever other way: what was
    /// translated for another one goes, and what can be translated now is. Once for each change.
    void applySettings(const std::string& reason);
    void setTranslationTarget(const std::string& target);
    void setTranslationBackend(const std::string& backend);
    void setSoftTranslationEnabled(bool enabled);

    // The session's life

    /// Before a new session.
    void resetForNewSession();
    /// Finishes what can be finished in this time, unfinished tails included. True if nothing is
    /// left.
    Task<bool> drainCommittedTranslationsBeforePersist(double timeoutSeconds);
    /// After a session: lets the translator and its memory go.
    void bigCleanup() { runtime_->bigCleanup(); }
    /// Ends everything for good.
    void shutDown() { runtime_->bigCleanup(); }

  private:
    using Unit = CommittedTranslationUnit;
    using Self = std::shared_ptr<LiveTranscriptTranslation>;

    static Task<bool> drain(Self self, double timeoutSeconds);
    /// One look at what waits, as part of the drain.
    void startDrainRun();

    Task<bool> processCommittedTranslationUnit(Unit unit, TranslationRunContext context,
                                               std::stop_token stop);
    void recordCommittedTranslationStart(const Unit& unit, const std::string& target,
                                         double startedAt,
                                         const TranslationAttemptDiagnostics& diagnostics);
    void applyCommittedTranslationSuccess(const Unit& unit, const std::string& target,
                                          const std::string& translatedText, double startedAt,
                                          TranslationAttemptDiagnostics diagnostics);
    void applyCommittedTranslationFailure(const Unit& unit, const std::string& target,
                                          const std::string& error, double startedAt,
                                          CommittedTranslationFailureAction action,
                                          TranslationAttemptDiagnostics diagnostics);
    void clearLanguageResourceFailures();
    void clearGhostIfCovered(const Unit& unit);
    void surfaceTranslationRecoveryFailure(const std::string& message);
    void updateTranslationRetryBlockedStatus();
    void publishBlocked(const CommittedTranslationRunPreparer::Blocked& blocked);

    void setTranslationPreparationStatus(const std::string& source, const std::string& target);
    void clearTranslationPreparationStatus(const std::string& source, const std::string& target);
    void handleTranslationLanguagePreparationFinished(
        const std::string& source, const std::string& target,
        const TranslationLanguagePreparationResult& result);

    void startGhostTranslationTask(const std::string& candidate,
                                   const TranslationRunContext& context, const UUID& requestID);
    void setGhostTranslationText(const std::string& text);

    void refresh(const std::string& reason) { access_.refreshCaptionDisplay(reason, nullptr); }

    std::shared_ptr<LiveTranslationRuntime> runtime_;
    AppSettings& settings_;
    LiveTranscriptTranslationAccess access_;
    LiveTranslationSettingsSnapshot applied_;
    Published<std::string> ghostTranslationText_;
    Published<std::string> translationStatusMessage_;
    Published<TranslationPreparationDisplayState> preparationDisplayState_;
};

} // namespace tessarune
