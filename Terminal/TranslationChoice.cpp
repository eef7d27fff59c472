#include "Terminal/TranslationChoice.h"

#include "Terminal/DownloadProgress.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <algorithm>

namespace tessarune {

namespace {

std::optional<TranslationLanguageState>
stateOf(const std::string& target, const std::vector<TranslationLanguageState>& languages) {
    const auto found =
        std::ranges::find_if(languages, [&](const auto& state) { return state.id == target; });
    return found == languages.end() ? std::nullopt : std::optional(*found);
}

/// Why the language is unavailable; empty if it is available.
std::string obstacle(const std::string& target,
                     const std::optional<TranslationLanguageState>& state) {
    if (!state || state->status == TranslationAvailabilityStatus::unsupported)
        return noTranslationModelText(target);
    if (state->status == TranslationAvailabilityStatus::installed)
        return "";
    if (!state->damage.empty())
        return damagedModelText(target, state->damage);
    const std::string name = languageName(target);
    return localized("The translation model for %@ is not on this computer. To download it (%@): "
                     "tessarune-terminal --languages download %@",
                     {name, downloadSize(state->bytes), target});
}

} // namespace

std::string languageName(const std::string& id) {
    const auto* language = TranslationSupport::targetLanguage(id);
    return language ? id + " (" + TranslationSupport::translationTargetDisplayName(*language) + ")"
                    : id;
}

std::string noTranslationModelText(const std::string& id) {
    return localized("There is no translation model for %@ yet; --languages lists the languages "
                     "that have one.",
                     {languageName(id)});
}

std::string damagedModelText(const std::string& id, const std::string& damage) {
    return localized("The translation model for %@ is damaged (%@). To download it again: "
                     "tessarune-terminal --languages download %@",
                     {languageName(id), damage, id});
}

std::string downloadSize(std::uint64_t bytes) {
    return bytes > 0 ? megabytes(bytes) : localized("20 to 60 MB");
}

TranslationChoice chooseTranslation(const LiveTranslationSettingsSnapshot& settings,
                                    const std::optional<std::string>& wanted,
                                    const std::vector<TranslationLanguageState>& languages) {
    const std::string& backend = settings.translationBackend;
    if (!wanted && TranslationSupport::isDisabledBackend(backend))
        return {};
    if (!wanted && !TranslationSupport::isAppleBackend(backend))
        return {"", TranslationSupport::backendNotConnectedSentence(backend), "", std::nullopt};
    const std::string target = wanted.value_or(settings.translationTargetLanguage);
    // A translation into the language of the source would repeat everything.
    if (target.empty() || TranslationSupport::isSameLanguageTarget(target))
        return {};
    const auto state = stateOf(target, languages);
    const std::string why = obstacle(target, state);
    if (why.empty())
        return {target, "", "", std::nullopt};
    TranslationChoice choice;
    if (state && state->status == TranslationAvailabilityStatus::supported)
        choice.missing = state;
    if (wanted)
        choice.failure = why;
    else
        choice.notice = bothSentences(localized("The captions are not translated."), why);
    return choice;
}

} // namespace tessarune
