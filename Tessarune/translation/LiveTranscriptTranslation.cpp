#include "Tessarune/translation/LiveTranscriptTranslation.h"

#include "Tessarune/translation/GhostTranslationCandidateProcessor.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/GhostTranslationPlanner.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <utility>

namespace tessarune {

LiveTranscriptTranslation::LiveTranscriptTranslation(
    std::shared_ptr<LiveTranslationRuntime> runtime, AppSettings& settings,
    LiveTranscriptTranslationAccess access)
    : runtime_(std::move(runtime)),
      settings_(settings),
      access_(std::move(access)),
      applied_(runtime_->settings()) {}

bool LiveTranscriptTranslation::hasPendingTranslations() const {
    return TranslationSegmentMutator::nextPendingIndex(access_.committedSegments()).has_value();
}

// Language preparation

void LiveTranscriptTranslation::prewarmCurrentTranslationPair(const std::string& reason) {
    const auto now = runtime_->settings();
    const auto context = TranslationRunContext::forTarget(now.translationTargetLanguage);
    if (!TranslationSupport::isAppleBackend(now.translationBackend) || context.passThrough)
        return;
    auto translator = runtime_->translator();
    if (!translator)
        return;
    const auto start = runtime_->startLanguagePreparation(
        context.sourceLanguage, context.target, std::move(translator), reason,
        [self = shared_from_this(), context](const TranslationLanguagePreparationResult& result) {
            self->handleTranslationLanguagePreparationFinished(context.sourceLanguage,
                                                               context.target, result);
        });
    if (start == TranslationLanguagePreparationStart::alreadyPrepared)
        return;
    setTranslationPreparationStatus(context.sourceLanguage, context.target);
    refresh("translation.languagePreparation." + std::string(name(start)));
}

void LiveTranscriptTranslation::setTranslationPreparationStatus(const std::string& source,
                                                                const std::string& target) {
    preparationDisplayState_ = TranslationPreparationDisplayState{
        TranslationPreparationDisplayState::Pair{source, target}};
    translationStatusMessage_ = localized("正在准备 Apple 离线翻译语言资源…");
}

void LiveTranscriptTranslation::clearTranslationPreparationStatus(const std::string& source,
                                                                  const std::string& target) {
    const TranslationPreparationDisplayState::Pair pair{source, target};
    if (preparationDisplayState_->preparing != pair)
        return;
    setPreparationIdle();
    translationStatusMessage_ = "";
}

void LiveTranscriptTranslation::handleTranslationLanguagePreparationFinished(
    const std::string& source, const std::string& target,
    const TranslationLanguagePreparationResult& result) {
    const auto now = runtime_->settings();
    if (!TranslationSupport::isAppleBackend(now.translationBackend) ||
        !Text::equal(now.translationTargetLanguage, target))
        return;
    clearTranslationPreparationStatus(source, target);
    refresh("translation.languagePreparation.done." + std::string(name(result.outcome)));

    using Kind = TranslationLanguagePreparationFollowUp::Kind;
    const auto followUp = TranslationLanguagePreparationPolicy::followUp(result, source, target);
    switch (followUp.kind) {
    case Kind::retryCommitted:
        startCommittedRun();
        break;
    case Kind::requeue:
        startCommittedTranslationTask(
            {target, source, TranslationSupport::isSameLanguageTarget(target, source)}, false);
        break;
    case Kind::none:
        break;
    case Kind::actionable:
        translationStatusMessage_ =
            TranslationSupport::translationFailureStatusText(followUp.message);
        refresh("translation.languagePreparation.actionable");
        break;
    }
}

// Previews

void LiveTranscriptTranslation::pumpGhostTranslation(const BoundaryObservation& observation) {
    if (!*settings_.softTranslationEnabled) {
        // Told at every decision: nothing to take away, nothing to draw.
        if (runtime_->hasGhostTask() || !runtime_->ghostSource().empty() ||
            !ghostTranslationText_->empty())
            cancelGhostTranslation();
        return;
    }
    const auto now = runtime_->settings();
    if (!TranslationSupport::isAppleBackend(now.translationBackend) || runtime_->hasCommittedTask())
        return;
    const auto candidate = GhostTranslationPlanner::latestCandidate(observation);
    if (!candidate)
        return;
    const auto key = GhostTranslationPlanner::normalizedKey(*candidate);
    if (key.empty() ||
        Text::equal(key, GhostTranslationPlanner::normalizedKey(runtime_->ghostSource())))
        return;
    const auto context = TranslationRunContext::forTarget(now.translationTargetLanguage);
    const UUID requestID = runtime_->beginGhostRequest(*candidate, context.target);
    startGhostTranslationTask(*candidate, context, requestID);
}

void LiveTranscriptTranslation::startGhostTranslationTask(const std::string& candidate,
                                                          const TranslationRunContext& context,
                                                          const UUID& requestID) {
    GhostTranslationTaskCoordinator::start(
        *runtime_, requestID, candidate, context,
        [self = shared_from_this()](std::string text, TranslationRunContext pair, UUID id,
                                    std::stop_token stop) {
            return GhostTranslationCandidateProcessor::process(
                std::move(text), std::move(pair), id, self->runtime_,
                self->access_.appendTranslationObservation,
                [self](const std::string& translated) {
                    self->setGhostTranslationText(translated);
                },
                std::move(stop));
        });
}

void LiveTranscriptTranslation::setGhostTranslationText(const std::string& text) {
    ghostTranslationText_ = text;
    refresh("translation.ghost.success");
}

void LiveTranscriptTranslation::cancelGhostTranslation() {
    runtime_->cancelGhostTask();
    runtime_->forgetGhostSource();
    ghostTranslationText_ = "";
    refresh("translation.ghost.clear");
}

// Settings

void LiveTranscriptTranslation::setTranslationTarget(const std::string& target) {
    if (*settings_.translationTargetLanguage == target)
        return;
    settings_.translationTargetLanguage = target;
    applySettings("settings.translationTarget");
}

void LiveTranscriptTranslation::setTranslationBackend(const std::string& backend) {
    if (*settings_.translationBackend == backend)
        return;
    settings_.translationBackend = backend;
    applySettings("settings.translationBackend");
}

void LiveTranscriptTranslation::applySettings(const std::string& reason) {
    const auto before = std::exchange(applied_, runtime_->settings());
    const auto isOff = [](const LiveTranslationSettingsSnapshot& settings) {
        return TranslationSupport::isDisabledBackend(settings.translationBackend);
    };
    if (before == applied_ || (isOff(before) && isOff(applied_)))
        return;
    runtime_->cancelCommittedTask();
    runtime_->committedHealth.reset();
    cancelGhostTranslation();
    // Nobody will report the end of the former pair's preparation.
    if (const auto pair = preparationDisplayState_->preparing)
        clearTranslationPreparationStatus(pair->source, pair->target);
    if (TranslationSupport::isDisabledBackend(runtime_->settings().translationBackend)) {
        access_.setStatusMessage(localized("翻译已关闭。"));
        return;
    }
    access_.changeCommittedSegments(TranslationSegmentMutator::clearResults);
    access_.updatePersistedTranscriptIfStopped();
    prewarmCurrentTranslationPair(reason);
    startCommittedRun();
    refresh(reason);
}

void LiveTranscriptTranslation::setSoftTranslationEnabled(bool enabled) {
    settings_.softTranslationEnabled = enabled;
    if (!enabled)
        cancelGhostTranslation();
    refresh("settings.softTranslation");
}

// The session's life

void LiveTranscriptTranslation::resetForNewSession() {
    cancelCommittedTranslationTask();
    runtime_->resetCommittedHealth();
    runtime_->cancelGhostTask();
    runtime_->forgetGhostSource();
    ghostTranslationText_ = "";
    translationStatusMessage_ = "";
    setPreparationIdle();
}

Task<bool>
LiveTranscriptTranslation::drainCommittedTranslationsBeforePersist(double timeoutSeconds) {
    return drain(shared_from_this(), timeoutSeconds);
}

Task<bool> LiveTranscriptTranslation::drain(Self self, double timeoutSeconds) {
    constexpr double secondsBetweenLooks = 0.05;
    auto& runtime = *self->runtime_;
    if (!TranslationSupport::isAppleBackend(runtime.settings().translationBackend))
        co_return true;
    const double deadline = runtime.now() + timeoutSeconds;
    while (runtime.now() < deadline) {
        if (self->hasPendingTranslations())
            self->startDrainRun();
        if (!runtime.hasCommittedTask())
            co_return !self->hasPendingTranslations();
        if (deadline - runtime.now() > 0) {
            Task<bool> waiting = sleep(runtime.executor(), secondsBetweenLooks);
            co_await waiting;
        }
    }
    if (!runtime.hasCommittedTask() && !self->hasPendingTranslations())
        co_return true;
    self->cancelCommittedTranslationTask();
    co_return false;
}

void LiveTranscriptTranslation::startDrainRun() {
    cancelGhostTranslationTask();
    const auto result = CommittedTranslationRunPreparer::prepare(*runtime_);
    if (const auto* blocked = std::get_if<CommittedTranslationRunPreparer::Blocked>(&result))
        publishBlocked(*blocked);
    const auto* context = std::get_if<TranslationRunContext>(&result);
    if (!context)
        return;
    if (!context->passThrough)
        prewarmCurrentTranslationPair("translation.prepare");
    startCommittedTranslationTask(*context, true);
}

} // namespace tessarune
