#include "Tessarune/ui/settings/TranslationTestModel.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <utility>

namespace tessarune {

namespace {

TranslationSupport::BackendStatus backendStatusOf(const AppSettings& settings) {
    return TranslationSupport::backendStatus(*settings.translationBackend,
                                             *settings.translationTargetLanguage);
}

} // namespace

TranslationTestModel::TranslationTestModel(const AppSettings& settings,
                                           std::shared_ptr<TranslationTaskBridge> test)
    : settings_(settings), test_(std::move(test)) {
    const auto announce = [this] { Q_EMIT changed(); };
    observations_.add(settings_.translationBackend.onChange(announce));
    observations_.add(settings_.translationTargetLanguage.onChange(announce));
    observations_.follow(test_->statusText(), announce);
    observations_.follow(test_->resultText(), announce);
    observations_.follow(test_->isTestingTranslation(), [this] {
        Q_EMIT changed();
        if (!isRunning())
            Q_EMIT ended();
    });
}

QString TranslationTestModel::state() const {
    return QString::fromStdString(backendStatusOf(settings_).title);
}

QString TranslationTestModel::stateDetail() const {
    return QString::fromStdString(backendStatusOf(settings_).detail);
}

bool TranslationTestModel::canRun() const {
    return !isRunning() && backendStatusOf(settings_).isRunnable;
}

QVariantMap TranslationTestModel::texts() const {
    return {{"run", QString::fromStdString(localized("测试翻译"))}};
}

void TranslationTestModel::run() {
    if (canRun())
        test_->runTranslationTest(*settings_.translationTargetLanguage);
}

} // namespace tessarune
