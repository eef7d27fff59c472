#include "Tessarune/translation/LiveTranslationRuntime.h"

#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/GhostTranslationPlanner.h"
#include "TessaruneCore/translation/TranslationSupport.h"

namespace tessarune {

LiveTranslationRuntime::LiveTranslationRuntime(Environment environment)
    : environment_(std::move(environment)) {}

bool LiveTranslationRuntime::isWanted(const TranslationRunContext& context,
                                      const std::stop_token& stop) const {
    if (stop.stop_requested())
        return false;
    const auto now = settings();
    return TranslationSupport::isAppleBackend(now.translationBackend) &&
           Text::equal(now.translationTargetLanguage, context.target);
}

std::shared_ptr<Translator> LiveTranslationRuntime::translator() {
    if (!cachedTranslator)
        cachedTranslator = environment_.makeTranslator();
    return cachedTranslator;
}

// Committed translations

void LiveTranslationRuntime::startCommittedTask(Operation operation) {
    cancelGhostTask();
    if (committedTask_)
        return;
    const UUID id = environment_.newID();
    committedRequestID_ = id;
    std::stop_source stop;
    committedTask_ = spawn(executor(),
                           run(shared_from_this(), id, std::move(operation), stop.get_token(),
                               &LiveTranslationRuntime::finishCommittedTaskIfCurrent),
                           stop);
}

Task<void> LiveTranslationRuntime::run(Self self, UUID id, Operation operation,
                                       std::stop_token stop,
                                       void (LiveTranslationRuntime::*finish)(const UUID& id)) {
    // If the task was cancelled before it began, the objects that its operation uses may be gone.
    if (stop.stop_requested())
        co_return;
    co_await operation(stop);
    (*self.*finish)(id);
}

void LiveTranslationRuntime::finishCommittedTaskIfCurrent(const UUID& id) {
    if (committedRequestID_ != id)
        return;
    committedTask_.reset();
    committedRequestID_.reset();
}

void LiveTranslationRuntime::cancelCommittedTask() {
    if (committedTask_)
        committedTask_->cancel();
    committedTask_.reset();
    committedRequestID_.reset();
}

void LiveTranslationRuntime::selectCommittedHealthPair(std::string_view source,
                                                       std::string_view target) {
    auto key = TranslationSupport::languagePairKey(source, target);
    if (committedHealthPairKey_ == key)
        return;
    committedHealthPairKey_ = std::move(key);
    committedHealth.reset();
    languageResourceFailures.clear();
}

void LiveTranslationRuntime::resetCommittedHealth() {
    committedHealthPairKey_.reset();
    committedHealth.reset();
}

// Previews

UUID LiveTranslationRuntime::beginGhostRequest(std::string source, std::string target) {
    cancelGhostTask();
    const UUID id = environment_.newID();
    ghostRequestID_ = id;
    ghostSource_ = std::move(source);
    ghostTarget_ = std::move(target);
    return id;
}

bool LiveTranslationRuntime::isCurrentGhostRequest(std::string_view source, std::string_view target,
                                                   const UUID& requestID) const {
    return ghostRequestID_ == requestID &&
           GhostTranslationPlanner::matches(source, target, ghostSource_, ghostTarget_);
}

void LiveTranslationRuntime::startGhostTask(const UUID& requestID, Operation operation) {
    std::stop_source stop;
    ghostTask_ = spawn(executor(),
                       run(shared_from_this(), requestID, std::move(operation), stop.get_token(),
                           &LiveTranslationRuntime::finishGhostTaskIfCurrent),
                       stop);
}

void LiveTranslationRuntime::finishGhostTaskIfCurrent(const UUID& requestID) {
    if (ghostRequestID_ != requestID)
        return;
    ghostTask_.reset();
    ghostRequestID_.reset();
}

void LiveTranslationRuntime::cancelGhostTask() {
    if (ghostTask_)
        ghostTask_->cancel();
    ghostTask_.reset();
    ghostRequestID_.reset();
}

void LiveTranslationRuntime::forgetGhostSource() {
    ghostSource_.clear();
    ghostTarget_.clear();
}

bool LiveTranslationRuntime::clearGhostSourceIfMatches(std::string_view text) {
    if (!Text::equal(GhostTranslationPlanner::normalizedKey(text),
                     GhostTranslationPlanner::normalizedKey(ghostSource_)))
        return false;
    forgetGhostSource();
    return true;
}

void LiveTranslationRuntime::bigCleanup() {
    cancelCommittedTask();
    cancelGhostTask();
    cancelLanguagePreparation();
    resetCommittedHealth();
    preparedLanguagePairKeys_.clear();
    languageResourceFailures.clear();
    cachedTranslator.reset();
}

} // namespace tessarune
