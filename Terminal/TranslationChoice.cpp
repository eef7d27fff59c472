#include "Terminal/TranslationChoice.h"

#include "TessaruneCore/text/Localization.h"
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
        return localized("there is no model for %@ yet; --languages lists those that there are",
                         {name});
    if (found->status == TranslationAvailabilityStatus::installed)
        return "";
    const std::string what =
        found->damage.empty() ? localized("the model for %@ is not on this computer", {name})
                              : localized("the model for %@ is damaged: %@", {name, found->damage});
    return what + "; " + localized("tessarune-terminal --languages download %@ gets it", {target});
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
    return {"", localized("Captions only, no translation: %@, --target off says no to it.", {why}),
            ""};
}

} // namespace tessarune
