#include "Terminal/TranslationChoice.h"

#include "TessaruneCore/translation/TranslationSupport.h"

#include <algorithm>

namespace tessarune {

namespace {

/// Why the language cannot be had now; empty if it can.
std::string obstacle(const std::string& target,
                     const std::vector<TranslationLanguageState>& languages) {
    const auto found =
        std::ranges::find_if(languages, [&](const auto& state) { return state.id == target; });
    const std::string name = languageName(target);
    if (found == languages.end() || found->status == TranslationAvailabilityStatus::unsupported)
        return "there is no model for " + name + " yet; --languages lists those that there are";
    if (found->status == TranslationAvailabilityStatus::installed)
        return "";
    return "the model for " + name +
           (found->damage.empty() ? " is not on this computer" : " is damaged: " + found->damage) +
           "; tessarune-terminal --languages download " + target + " gets it";
}

} // namespace

std::string languageName(const std::string& id) {
    const auto* language = TranslationSupport::targetLanguage(id);
    return language ? id + " (" + TranslationSupport::translationTargetDisplayName(*language) + ")"
                    : id;
}

TranslationChoice chooseTranslation(const LiveTranslationSettingsSnapshot& settings,
                                    const std::optional<std::string>& wanted,
                                    const std::vector<TranslationLanguageState>& languages) {
    const std::string& backend = settings.translationBackend;
    if (!wanted && TranslationSupport::isDisabledBackend(backend))
        return {};
    if (!wanted && !TranslationSupport::isAppleBackend(backend))
        return {"", TranslationSupport::backendNotConnectedSentence(backend), ""};
    const std::string target = wanted.value_or(settings.translationTargetLanguage);
    // The source's own language would say everything twice.
    if (target.empty() || TranslationSupport::isSameLanguageTarget(target))
        return {};
    const std::string why = obstacle(target, languages);
    if (why.empty())
        return {target, "", ""};
    if (wanted)
        return {"", "", why};
    return {"", "Captions only, no translation: " + why + ", --target off says no to it.", ""};
}

} // namespace tessarune
