#include "bench/translate/CommittedRows.h"

#include "Tessarune/translation/AppleTranslator.h"

#include <utility>

namespace tessarune {

CommittedRows::CommittedRows(Host& host, std::shared_ptr<TranslationService> service)
    : host_(host), landed_(Executor::main(host)) {
    settings_.translationTargetLanguage = "pt-BR";
    const auto runtime =
        std::make_shared<LiveTranslationRuntime>(LiveTranslationRuntime::Environment{
            host,
            [this] { return LiveTranslationSettingsSnapshot::current(settings_); },
            [&host, service]() -> std::shared_ptr<Translator> {
                return std::make_shared<AppleTranslator>(host, service, Executor::main(host));
            },
            {}});
    translation_ = std::make_shared<LiveTranscriptTranslation>(runtime, settings_, access());
    translation_->prewarmCurrentTranslationPair("bench");
}

CommittedRows::~CommittedRows() {
    translation_->shutDown();
}

Task<std::string> CommittedRows::commit(std::string text) {
    landed_ = OneShot<bool>(Executor::main(host_));
    CaptionSegment row;
    row.id = UUID::random();
    row.sourceText = std::move(text);
    row.committedAt = row.startedAt = committedAt_ = host_.now();
    rows_ = {row};
    translation_->startCommittedRun();
    co_await landed_;
    co_return rows_.front().translatedText.value_or("");
}

LiveTranscriptTranslationAccess CommittedRows::access() {
    return {.committedSegments = [this]() -> const std::vector<CaptionSegment>& { return rows_; },
            .changeCommittedSegments = [this](const auto& change) { change(rows_); },
            .setStatusMessage = [](const std::string&) {},
            .refreshCaptionDisplay =
                [this](const std::string& reason, const auto*) {
                    if (reason == "translation.committed.success")
                        landed_.resume(true);
                },
            .updatePersistedTranscriptIfStopped = [] {},
            .appendTranslationObservation =
                [this](const TranslationObservation& observation) { note(observation); }};
}

void CommittedRows::note(const TranslationObservation& observation) {
    if (observation.phase == TranslationObservation::Phase::start) {
        startedAt_ = observation.t;
        return;
    }
    const TranslationAttemptDiagnostics& attempt = observation.diagnostics;
    const double availability = attempt.availabilitySeconds.value_or(0);
    const double engine = attempt.translateCallSeconds.value_or(0);
    stages_.queue.push_back(startedAt_ - committedAt_);
    stages_.availability.push_back(availability);
    stages_.engine.push_back(engine);
    stages_.apply.push_back(host_.now() - startedAt_ - availability - engine);
}

} // namespace tessarune
