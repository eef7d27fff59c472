#include "bench/translate/CommittedRows.h"

#include "Tessarune/translation/AppleTranslator.h"

#include <utility>

namespace tessarune {

CommittedRows::CommittedRows(Host& host, std::shared_ptr<TranslationService> service)
    : host_(host), translated_(Executor::main(host)) {
    settings_.translationTargetLanguage = "pt-BR";
    LiveTranslationRuntime::Environment environment{host, settings_};
    environment.makeTranslator = [&host, service] {
        return std::make_shared<AppleTranslator>(host, service, Executor::main(host));
    };
    translation_ = std::make_shared<LiveTranscriptTranslation>(std::move(environment));
    translation_->attach(*this);
    translation_->prewarmCurrentTranslationPair("bench");
}

CommittedRows::~CommittedRows() {
    translation_->shutDown();
}

Task<std::string> CommittedRows::commit(std::string text) {
    translated_ = OneShot<bool>(Executor::main(host_));
    CaptionSegment row;
    row.id = UUID::random();
    row.sourceText = std::move(text);
    row.committedAt = row.startedAt = committedAt_ = host_.now();
    rows_ = {row};
    translation_->startCommittedRun();
    co_await translated_;
    co_return rows_.front().translatedText.value_or("");
}

void CommittedRows::refreshCaptionDisplay(const std::string&,
                                          const LiveCaptionDisplayTranslationPatch* patch) {
    if (patch)
        translated_.resume(true);
}

void CommittedRows::appendTranslationObservation(const TranslationObservation& observation) {
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
