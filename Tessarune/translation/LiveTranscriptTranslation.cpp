#include "Tessarune/translation/LiveTranscriptTranslation.h"

#include "Tessarune/translation/AppleTranslator.h"
#include "Tessarune/translation/GhostTranslationCandidateProcessor.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/GhostTranslationPlanner.h"
#include "TessaruneCore/translation/TranslationSegmentMutator.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <utility>

namespace tessarune {

namespace {

/// The null object for the time before `attach` and after `shutDown`.
class NullCaptions final : public TranslatedCaptions {
  public:
    const std::vector<CaptionSegment>& committedSegments() const override { return none_; }
    void
    changeCommittedSegments(const std::function<void(std::span<CaptionSegment>)>& change) override {
        change({});
    }
    void setStatusMessage(const std::string&) override {}
    void refreshCaptionDisplay(const std::string&,
                               const LiveCaptionDisplayTranslationPatch*) override {}
    void updatePersistedTranscriptIfStopped() override {}
    void appendTranslationObservation(const TranslationObservation&) override {}

  private:
    const std::vector<CaptionSegment> none_;
};

TranslatedCaptions* nullCaptions() {
    static NullCaptions instance;
    return &instance;
}

} // namespace

LiveTranscriptTranslation::LiveTranscriptTranslation(
    LiveTranslationRuntime::Environment environment)
    : runtime_(std::make_shared<LiveTranslationRuntime>(environment)),
      settings_(environment.settings),
      captions_(nullCaptions()),
      applied_(runtime_->settings()) {}

std::shared_ptr<LiveTranscriptTranslation>
LiveTranscriptTranslation::make(Host& host, AppSettings& settings, TessaruneFileLogger& logger,
                                const std::shared_ptr<TranslationService>& service) {
    LiveTranslationRuntime::Environment environment{host, settings};
    if (service) {
        environment.makeTranslator = [&host, service] {
            return std::make_shared<AppleTranslator>(host, service, Executor::main(host),
                                                     AppleTranslator::Downloads::never);
        };
    }
    environment.log = [&logger](const std::string& name, const LogFields& fields) {
        logger.event(name, fields, Importance::important);
    };
    return std::make_shared<LiveTranscriptTranslation>(std::move(environment));
}

void LiveTranscriptTranslation::attach(TranslatedCaptions& captions) {
    captions_ = &captions;
    applied_ = runtime_->settings();
    observations_.emplace();
    const auto observe = [this](Setting<std::string>& setting, const char* reason) {
        observations_->follow(setting.published(), [this, reason] { applySettings(reason); });
    };
    observe(settings_.translationTargetLanguage, "settings.translationTarget");
    observe(settings_.translationBackend, "settings.translationBackend");
    observations_->followChanges(settings_.softTranslationEnabled.published(),
                                 [this](bool isEnabled) {
                                     if (!isEnabled)
                                         cancelGhostTranslation();
                                 });
}

void LiveTranscriptTranslation::shutDown() {
    runtime_->bigCleanup();
    captions_ = nullCaptions();
    observations_.reset();
}

bool LiveTranscriptTranslation::hasPendingTranslations() const {
    return TranslationSegmentMutator::nextPendingIndex(captions_->committedSegments()).has_value();
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
    showPreparation({TranslationPreparationDisplayState::Pair{source, target}});
    setTranslationStatusMessage(localized("正在准备 Apple 离线翻译语言资源…"));
}

void LiveTranscriptTranslation::clearTranslationPreparationStatus(const std::string& source,
                                                                  const std::string& target) {
    const TranslationPreparationDisplayState::Pair pair{source, target};
    if (view_.translationPreparationDisplayState->preparing != pair)
        return;
    setPreparationIdle();
    setTranslationStatusMessage("");
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
        startCommittedRun(false);
        break;
    case Kind::requeue:
        startCommittedTranslationTask(
            {target, source, TranslationSupport::isSameLanguageTarget(target, source)}, false);
        break;
    case Kind::none:
        break;
    case Kind::actionable:
        setTranslationStatusMessage(
            TranslationSupport::translationFailureStatusText(followUp.message));
        refresh("translation.languagePreparation.actionable");
        break;
    }
}

void LiveTranscriptTranslation::reportLanguagePreparation(const std::string& source,
                                                          const std::string& target) {
    setTranslationPreparationStatus(source, target);
    refresh("translation.languagePreparation.waiting");
}

// Previews

void LiveTranscriptTranslation::pumpGhostTranslation(const BoundaryObservation& observation) {
    const auto now = runtime_->settings();
    if (!*settings_.softTranslationEnabled ||
        !TranslationSupport::isAppleBackend(now.translationBackend) || runtime_->hasCommittedTask())
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
    runtime_->startGhostTask(requestID, [self = shared_from_this(), text = *candidate, context,
                                         requestID](std::stop_token stop) {
        return GhostTranslationCandidateProcessor::process(self, text, context, requestID,
                                                           std::move(stop));
    });
}

void LiveTranscriptTranslation::setGhostTranslationText(const std::string& text) {
    view_.ghostTranslationSourceText = runtime_->ghostSource();
    view_.ghostTranslationText = text;
    refresh("translation.ghost.success");
}

void LiveTranscriptTranslation::cancelGhostTranslation() {
    runtime_->cancelGhostTask();
    runtime_->forgetGhostSource();
    view_.ghostTranslationText = "";
    refresh("translation.ghost.clear");
}

// Settings

void LiveTranscriptTranslation::setTranslationTarget(const std::string& target) {
    if (*settings_.translationTargetLanguage != target)
        settings_.translationTargetLanguage = target;
}

void LiveTranscriptTranslation::setTranslationBackend(const std::string& backend) {
    if (*settings_.translationBackend != backend)
        settings_.translationBackend = backend;
}

void LiveTranscriptTranslation::applySettings(const std::string& reason) {
    const auto before = std::exchange(applied_, runtime_->settings());
    if (before == applied_)
        return;
    runtime_->cancelCommittedTask();
    runtime_->committedHealth.reset();
    cancelGhostTranslation();
    // The end of the previous pair's preparation will be ignored, so its status is cleared here.
    if (const auto pair = view_.translationPreparationDisplayState->preparing)
        clearTranslationPreparationStatus(pair->source, pair->target);
    if (TranslationSupport::isDisabledBackend(applied_.translationBackend)) {
        captions_->setStatusMessage(localized("翻译已关闭。"));
        return;
    }
    captions_->changeCommittedSegments(TranslationSegmentMutator::clearResults);
    captions_->updatePersistedTranscriptIfStopped();
    prewarmCurrentTranslationPair(reason);
    startCommittedRun(false);
    refresh(reason);
}

void LiveTranscriptTranslation::setSoftTranslationEnabled(bool enabled) {
    settings_.softTranslationEnabled = enabled;
}

// The session's lifecycle

void LiveTranscriptTranslation::resetForNewSession() {
    cancelCommittedTranslationTask();
    runtime_->resetCommittedHealth();
    runtime_->cancelGhostTask();
    runtime_->forgetGhostSource();
    view_.ghostTranslationText = "";
    setTranslationStatusMessage("");
    setPreparationIdle();
}

void LiveTranscriptTranslation::bigCleanup() {
    // A cancelled preparation does not report its end, so its status is cleared here.
    if (const auto pair = view_.translationPreparationDisplayState->preparing)
        clearTranslationPreparationStatus(pair->source, pair->target);
    runtime_->bigCleanup();
}

Task<bool>
LiveTranscriptTranslation::drainCommittedTranslationsBeforePersist(double timeoutSeconds) {
    return drain(shared_from_this(), timeoutSeconds);
}

namespace {

/// Sets `canStart` to whether the pending rows can be translated. They cannot while their model is
/// missing, because a session downloads no models.
Task<void> checkForModel(std::shared_ptr<Translator> translator, TranslationRunContext context,
                         std::shared_ptr<std::optional<bool>> canStart) {
    Task<TranslationAvailabilityStatus> checking =
        translator->availabilityStatus(context.sourceLanguage, context.target);
    const TranslationAvailabilityStatus status = co_await checking;
    *canStart = status != TranslationAvailabilityStatus::supported;
}

} // namespace

Task<bool> LiveTranscriptTranslation::drain(Self self, double timeoutSeconds) {
    constexpr double secondsUntilAnswer = 0.005;
    constexpr double secondsBetweenChecks = 0.05;
    auto& runtime = *self->runtime_;
    if (!TranslationSupport::isAppleBackend(runtime.settings().translationBackend))
        co_return true;
    const double deadline = runtime.now() + timeoutSeconds;
    const auto context =
        TranslationRunContext::forTarget(runtime.settings().translationTargetLanguage);
    std::shared_ptr<Translator> translator;
    if (!context.passThrough && self->hasPendingTranslations())
        translator = runtime.translator();
    // Empty until the translator has answered. If it never answers, the deadline ends the loop.
    const auto canStart = std::make_shared<std::optional<bool>>();
    if (translator)
        spawn(runtime.executor(), checkForModel(translator, context, canStart));
    else
        *canStart = true;
    while (canStart->value_or(true) && runtime.now() < deadline) {
        double pause = secondsUntilAnswer;
        if (canStart->has_value()) {
            if (self->hasPendingTranslations())
                self->startCommittedRun(true);
            if (!runtime.hasCommittedTask())
                co_return !self->hasPendingTranslations();
            pause = secondsBetweenChecks;
        }
        co_await sleep(runtime.executor(), pause);
    }
    if (!runtime.hasCommittedTask() && !self->hasPendingTranslations())
        co_return true;
    self->cancelCommittedTranslationTask();
    co_return false;
}

} // namespace tessarune
