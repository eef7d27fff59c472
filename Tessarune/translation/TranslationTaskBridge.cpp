#include "Tessarune/translation/TranslationTaskBridge.h"

#include "Tessarune/translation/AppleTranslator.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslationSupport.h"
#include "TessaruneCore/translation/TranslatorError.h"

namespace tessarune {

namespace {

constexpr const char* sampleText = "Every small step forward makes the next one easier.";

std::string failureText(const std::exception_ptr& error, const TranslationTestRequest& request) {
    try {
        std::rethrow_exception(error);
    } catch (const std::exception& known) {
        return localized("测试失败：%@", {TranslationTaskBridge::errorMessage(known, request)});
    }
}

} // namespace

TranslationTaskBridge::TranslationTaskBridge(Environment environment)
    : environment_(std::move(environment)) {}

void TranslationTaskBridge::runTranslationTest(const std::string& target) {
    request_ = TranslationTestRequest{
        UUID::random(), std::string(TranslationSupport::defaultSourceLanguage), target, sampleText};
    isTestingTranslation_ = true;
    resultText_ = "";
    spawn(Executor::main(environment_.host), test(shared_from_this(), *request_));
}

Task<void> TranslationTaskBridge::test(Self self, TranslationTestRequest request) {
    const auto translator = self->translator();
    if (!translator) {
        const auto unavailable = TranslatorRuntimeError::translatorUnavailable();
        self->statusText_ = localized("测试失败：%@", {errorMessage(unavailable, request)});
        self->finish();
        co_return;
    }
    const TranslationAvailabilityStatus status =
        co_await translator->availabilityStatus(request.source, request.target);
    if (!self->isCurrent(request))
        co_return;
    switch (status) {
    case TranslationAvailabilityStatus::unsupported:
        self->statusText_ =
            TranslationSupport::unsupportedPairMessage(request.source, request.target);
        self->finish();
        co_return;
    case TranslationAvailabilityStatus::installed:
        self->statusText_ = localized("正在翻译…");
        break;
    case TranslationAvailabilityStatus::supported:
        self->statusText_ = localized("正在打开 Apple 语言下载面板…");
        break;
    }
    // Each test uses a new session, because an older one may have an outdated state of the pair.
    const auto session = self->environment_.service->session(
        TranslationSupport::appleLanguageIdentifier(request.source),
        TranslationSupport::appleLanguageIdentifier(request.target),
        Executor::main(self->environment_.host));
    co_await run(self, session, request);
}

Task<void> TranslationTaskBridge::run(Self self, std::shared_ptr<TranslationSession> session,
                                      TranslationTestRequest request) {
    std::string translated;
    std::exception_ptr error;
    try {
        co_await session->prepareTranslation();
        if (!self->isCurrent(request))
            co_return;
        self->statusText_ = localized("正在翻译…");
        translated = (co_await session->translate(request.text)).targetText;
    } catch (...) {
        error = std::current_exception();
    }
    if (!self->isCurrent(request))
        co_return;
    if (error) {
        self->statusText_ = failureText(error, request);
        self->finish();
        co_return;
    }
    self->resultText_ = TranslationSupport::normalizedTranslatedText(translated, request.target);
    self->statusText_ = localized("测试成功");
    self->retryLiveTranslationsIfCurrent(request);
    self->finish();
}

/// The translator to ask for the state of the pair; null if this computer has none.
std::shared_ptr<Translator> TranslationTaskBridge::translator() const {
    if (environment_.live)
        return environment_.live->runtime().translator();
    if (!environment_.service)
        return nullptr;
    return std::make_shared<AppleTranslator>(environment_.host, environment_.service,
                                             Executor::main(environment_.host));
}

void TranslationTaskBridge::retryLiveTranslationsIfCurrent(const TranslationTestRequest& request) {
    if (!environment_.live)
        return;
    const auto now = environment_.live->runtime().settings();
    if (TranslationSupport::isAppleBackend(now.translationBackend) &&
        Text::equal(now.translationTargetLanguage, request.target))
        environment_.live->retryIncompleteTranslations();
}

void TranslationTaskBridge::finish() {
    isTestingTranslation_ = false;
    request_.reset();
}

std::string TranslationTaskBridge::errorMessage(const std::exception& error,
                                                const TranslationTestRequest& request) {
    std::string message = TranslatorError::detailsOf(error).message;
    if (message != "Unable to Translate")
        return message;
    return localized("Apple 翻译语言资源暂未准备好。请确认 %@ → %@ 已完成下载，然后重试。",
                     {TranslationSupport::appleLanguageIdentifier(request.source),
                      TranslationSupport::appleLanguageIdentifier(request.target)});
}

} // namespace tessarune
