#include "Tessarune/session/LiveSessionTranslation.h"

#include "Tessarune/translation/AppleTranslator.h"
#include "Tessarune/translation/InstalledTranslationService.h"

#include <utility>
#include <vector>

namespace tessarune {

namespace {

std::shared_ptr<LiveTranslationRuntime>
makeRuntime(const LiveSessionTranslation::Environment& environment) {
    return std::make_shared<LiveTranslationRuntime>(LiveTranslationRuntime::Environment{
        environment.host,
        [&settings = environment.settings] {
            return LiveTranslationSettingsSnapshot::current(settings);
        },
        [&host = environment.host, service = environment.service]() -> std::shared_ptr<Translator> {
            if (!service)
                return nullptr;
            return std::make_shared<AppleTranslator>(
                host, std::make_shared<InstalledTranslationService>(service), Executor::main(host));
        },
        [&logger = environment.logger](const std::string& name, const LogFields& fields) {
            logger.event(name, fields, Importance::important);
        }});
}

/// Keeps what the session shows equal to `original`.
template <typename T>
void follow(Published<T>& original, std::weak_ptr<LiveTranscriptStore> weak,
            void (LiveTranscriptStore::*show)(T)) {
    original.onDidChange([weak = std::move(weak), show](const T& value) {
        if (const auto store = weak.lock())
            (store.get()->*show)(value);
    });
}

} // namespace

LiveSessionTranslation::LiveSessionTranslation(const Environment& environment)
    : session_(std::make_shared<Session>()),
      translation_(std::make_shared<LiveTranscriptTranslation>(
          makeRuntime(environment), environment.settings, access(session_, environment))) {}

const CaptionCore::Rows& LiveSessionTranslation::Session::committedSegments() const {
    static const CaptionCore::Rows nobodys;
    const auto owner = store.lock();
    return owner ? *owner->core.committedSegments : nobodys;
}

void LiveSessionTranslation::Session::change(
    const std::function<void(std::span<CaptionSegment>)>& change) const {
    const auto owner = store.lock();
    if (!owner)
        return;
    const CaptionCore::Rows& rows = *owner->core.committedSegments;
    std::vector<bool> wasTranslated;
    wasTranslated.reserve(rows.size());
    for (const CaptionSegment& row : rows)
        wasTranslated.push_back(row.translatedText.has_value());
    owner->changeCommittedSegments(change);
    std::vector<UUID> changed;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].translatedText.has_value() != wasTranslated[i])
            changed.push_back(rows[i].id);
    }
    owner->translationLanded(changed);
}

LiveTranscriptTranslationAccess
LiveSessionTranslation::access(const std::shared_ptr<Session>& session,
                               const Environment& environment) {
    return {
        .committedSegments = [session]() -> const std::vector<CaptionSegment>& {
            return session->committedSegments();
        },
        .changeCommittedSegments = [session](const auto& change) { session->change(change); },
        .setStatusMessage =
            [session](std::string text) {
                if (const auto store = session->store.lock())
                    store->showTranslationStatus(std::move(text));
            },
        .refreshCaptionDisplay =
            [session](const std::string& reason, const LiveCaptionDisplayTranslationPatch*) {
                if (const auto store = session->store.lock())
                    store->refreshCaptionDisplay(reason);
            },
        .updatePersistedTranscriptIfStopped =
            [session] {
                if (const auto store = session->store.lock())
                    store->updatePersistedTranscriptIfStopped();
            },
        .appendTranslationObservation = environment.appendTranslationObservation,
    };
}

SessionTranslation LiveSessionTranslation::steps() const {
    const auto self = translation_;
    return {
        .prewarmCurrentTranslationPair =
            [self](const std::string& reason) { self->prewarmCurrentTranslationPair(reason); },
        .settingChanged = [self](const std::string& reason) { self->applySettings(reason); },
        .startCommittedRun = [self] { self->startCommittedRun(); },
        .pumpGhostTranslation =
            [self](const BoundaryObservation& observation) {
                self->pumpGhostTranslation(observation);
            },
        .cancelCommittedTranslationTask = [self] { self->cancelCommittedTranslationTask(); },
        .cancelGhostTranslation = [self] { self->cancelGhostTranslation(); },
        .resetForNewSession = [self] { self->resetForNewSession(); },
        .hasPendingTranslations = [self] { return self->hasPendingTranslations(); },
        .drainCommittedTranslationsBeforePersist =
            [self](double timeoutSeconds) {
                return self->drainCommittedTranslationsBeforePersist(timeoutSeconds);
            },
        .setPreparationIdle = [self] { self->setPreparationIdle(); },
        .setTranslationStatusMessage =
            [self](const std::string& text) { self->setTranslationStatusMessage(text); },
        .bigCleanup = [self] { self->bigCleanup(); },
        .shutDown = [self] { self->shutDown(); },
    };
}

void LiveSessionTranslation::attach(const std::shared_ptr<LiveTranscriptStore>& store) {
    session_->store = store;
    follow(translation_->ghostTranslationText(), store, &LiveTranscriptStore::showGhostTranslation);
    follow(translation_->translationStatusMessage(), store,
           &LiveTranscriptStore::showTranslationMessage);
    follow(translation_->preparationDisplayState(), store,
           &LiveTranscriptStore::showTranslationPreparation);
}

} // namespace tessarune
