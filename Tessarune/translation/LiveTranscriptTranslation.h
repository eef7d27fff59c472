#pragma once

#include "Tessarune/shell/AppSettings.h"
#include "Tessarune/shell/TessaruneFileLogger.h"
#include "Tessarune/translation/LiveTranslationRuntime.h"
#include "Tessarune/translation/SessionTranslation.h"
#include "Tessarune/translation/TranslationService.h"
#include "TessaruneCore/observation/Observations.h"
#include "TessaruneCore/translation/CommittedTranslationUnit.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace tessarune {

/// The translation half of a live session: starts runs of committed translations and previews,
/// prepares language pairs, writes outcomes into the caption rows, and reports its progress. It
/// observes the settings that it depends on, so a change from anywhere takes effect.
///
/// Main queue. Made with `std::make_shared`: tasks that still wait for the translator keep this
/// object alive.
class LiveTranscriptTranslation final
    : public SessionTranslation,
      public std::enable_shared_from_this<LiveTranscriptTranslation> {
  public:
    explicit LiveTranscriptTranslation(LiveTranslationRuntime::Environment environment);

    /// Translates with `service`, or not at all if it is null; never downloads. The references must
    /// outlive every call to the service, even one that hangs.
    static std::shared_ptr<LiveTranscriptTranslation>
    make(Host& host, AppSettings& settings, TessaruneFileLogger& logger,
         const std::shared_ptr<TranslationService>& service);

    LiveTranslationRuntime& runtime() { return *runtime_; }
    bool isCommittedTranslating() const override { return runtime_->hasCommittedTask(); }

    // The session's lifecycle; see SessionTranslation

    void attach(TranslatedCaptions& captions) override;
    void resetForNewSession() override;
    void prewarmCurrentTranslationPair(const std::string& reason) override;
    void startCommittedRun() override { startCommittedRun(false); }
    bool hasPendingTranslations() const override;
    void pumpGhostTranslation(const BoundaryObservation& observation) override;
    void cancelGhostTranslation() override;
    void cancelCommittedTranslationTask() override;
    Task<bool> drainCommittedTranslationsBeforePersist(double timeoutSeconds) override;
    void bigCleanup() override;
    void shutDown() override;

    // The user's commands

    void setTranslationTarget(const std::string& target);
    void setTranslationBackend(const std::string& backend);
    void setSoftTranslationEnabled(bool enabled);
    /// Retries failed rows and continues with pending ones. Also called when
    /// `TranslationTaskBridge` has tested the pair with success.
    void retryIncompleteTranslations();

    // Outcomes, for the processors of units and previews. `startedAt` is in seconds since 1970.

    using Unit = CommittedTranslationUnit;
    void recordCommittedTranslationStart(const Unit& unit, const std::string& target,
                                         double startedAt,
                                         const TranslationAttemptDiagnostics& diagnostics);
    void applyCommittedTranslationSuccess(const Unit& unit, const std::string& target,
                                          const std::string& translatedText, double startedAt,
                                          const TranslationAttemptDiagnostics& diagnostics);
    void applyCommittedTranslationFailure(const Unit& unit, const std::string& target,
                                          const std::string& error, double startedAt,
                                          CommittedTranslationFailureAction action,
                                          const TranslationAttemptDiagnostics& diagnostics);
    /// Reports that the pair must be prepared first. The unit remains pending.
    void reportLanguagePreparation(const std::string& source, const std::string& target);
    /// Reports that the pair could not be prepared again, so that the user can act.
    void surfaceTranslationRecoveryFailure(const std::string& message);
    void setGhostTranslationText(const std::string& text);
    bool keepsTextsForDiagnosis() const { return captions_->keepsTextsForDiagnosis(); }
    void appendTranslationObservation(const TranslationObservation& observation) {
        captions_->appendTranslationObservation(observation);
    }

  private:
    using Self = std::shared_ptr<LiveTranscriptTranslation>;

    // Runs of committed translations
    void startCommittedRun(bool forceTail);
    std::optional<TranslationRunContext> prepareCommittedTranslationRunContext();
    void reportBlocked(const std::string& message, const std::string& sentence);
    void startCommittedTranslationTask(const TranslationRunContext& context, bool forceTail);
    static Task<void> runQueue(Self self, TranslationRunContext context, bool forceTail,
                               std::stop_token stop);
    static Task<bool> drain(Self self, double timeoutSeconds);
    void applyOutcome(TranslationObservation outcome,
                      const std::function<void(std::span<CaptionSegment>)>& change);
    void clearLanguageResourceFailures();
    void clearGhostIfCovered(const Unit& unit);
    void updateTranslationRetryBlockedStatus();

    // Language preparation
    void setTranslationPreparationStatus(const std::string& source, const std::string& target);
    void clearTranslationPreparationStatus(const std::string& source, const std::string& target);
    void handleTranslationLanguagePreparationFinished(
        const std::string& source, const std::string& target,
        const TranslationLanguagePreparationResult& result);

    /// Called when the target or the backend may have changed. Drops the results for the previous
    /// values and translates again. If translation is off now, only stops, and keeps the results.
    void applySettings(const std::string& reason);

    void refresh(const std::string& reason) { captions_->refreshCaptionDisplay(reason, nullptr); }

    const std::shared_ptr<LiveTranslationRuntime> runtime_;
    AppSettings& settings_;
    TranslatedCaptions* captions_; ///< ignores all calls before `attach` and after `shutDown`
    LiveTranslationSettingsSnapshot applied_;
    std::optional<Observations> observations_; ///< from `attach` to `shutDown`
};

} // namespace tessarune
