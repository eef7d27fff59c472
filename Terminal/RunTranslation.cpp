#include "Terminal/RunTranslation.h"

#include "Terminal/RunFailure.h"
#include "Terminal/TranslationChoice.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <string_view>

namespace tessarune {

namespace {

/// The settings key for the last unavailable choice that was reported.
constexpr std::string_view reportedKey = "toldMissingTranslation";

} // namespace

RunTranslation::RunTranslation(Application& application, std::optional<std::string> wanted,
                               std::function<void(const std::string&)> say)
    : application_(application), wanted_(std::move(wanted)), say_(std::move(say)) {}

RunTranslation::~RunTranslation() {
    if (observer_)
        application_.settings.changesFromElsewhere.remove(*observer_);
}

std::string RunTranslation::choose() {
    AppSettings& settings = application_.settings;
    chosenFrom_ = stored();
    const TranslationChoice choice =
        chooseTranslation(LiveTranslationSettingsSnapshot::current(settings), wanted_,
                          application_.translationModels.list());
    if (!choice.failure.empty())
        throw RunFailure(ExitStatus::noModel, choice.failure);
    if (!choice.notice.empty())
        sayMissing(choice.notice);
    if (choice.target.empty()) {
        application_.override(settings.translationBackend,
                              std::string(TranslationSupport::disabledBackendName));
    } else if (wanted_) {
        application_.override(settings.translationBackend,
                              std::string(TranslationSupport::appleBackendName));
        application_.override(settings.translationTargetLanguage, choice.target);
    }
    return choice.target;
}

void RunTranslation::follow(std::function<void(std::string target)> onChange) {
    if (wanted_)
        return;
    observer_ = application_.settings.changesFromElsewhere.onDidChange(
        [this, onChange = std::move(onChange)](std::uint64_t) {
            if (stored() == chosenFrom_)
                return;
            application_.endOverride(application_.settings.translationBackend);
            onChange(choose());
        });
}

RunTranslation::Stored RunTranslation::stored() const {
    const AppSettings& settings = application_.settings;
    return {application_.storedDefaults.value(settings.translationBackend.key()),
            application_.storedDefaults.value(settings.translationTargetLanguage.key())};
}

/// Reports an unavailable choice once, not at every start.
void RunTranslation::sayMissing(const std::string& notice) {
    if (!say_)
        return;
    const AppSettings& settings = application_.settings;
    const SettingValue choice =
        *settings.translationBackend + " " + *settings.translationTargetLanguage;
    if (application_.defaults.value(reportedKey) == choice)
        return;
    say_(notice);
    application_.defaults.set(reportedKey, choice);
}

} // namespace tessarune
